-- What the BOM browser shows beyond the factory's base data: the extension of the ledgers, more user-defined fields of
-- the BOM bill, and what they hold.
--
-- Header fields  FHeadSelfZ0140 drawing number (plain), FHeadSelfZ0141 department (looked up)
-- Line fields    FEntrySelfZ0130 supplier part number (plain), FEntrySelfZ0131 supplier (looked up),
--                FEntrySelfZ0132 inspection (control type 22)

INSERT INTO t_components (FComponent, FComponentExt) VALUES
  ('QorvaneMBomBill.BomView', 'QorvaneMBomBillExt.BomView')
INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FHeadCaption, FHeadCaption_CHT, FHeadCaption_EN, FCtlType, FLookUpCls, FRelateOutTbl, FDefaultCtl) VALUES
  ('Z01', 31, 'FEntrySelfZ0131', N'供应商', N'供應商', N'Supplier', 1, 8, 0, 0),
  ('Z01', 32, 'FEntrySelfZ0132', N'检验方式', N'檢驗方式', N'Inspection', 22, -1, 0, 0)
GO

INSERT INTO ICUserDefinedValue (FTranType, FInterID, FEntryID, FFieldName, FID, FName) VALUES
  (50, 1001, 0, 'FHeadSelfZ0140', N'CB-28-A1', NULL),
  (50, 1002, 0, 'FHeadSelfZ0140', N'CB-28-A2', NULL),
  (50, 1002, 0, 'FHeadSelfZ0141', N'31', N'城市车车间 City bike shop'),
  (50, 1004, 0, 'FHeadSelfZ0140', N'ST-54-C', NULL),
  (50, 1004, 0, 'FHeadSelfZ0141', N'32', N'焊接车间 Welding shop'),
  (50, 1002, 5, 'FEntrySelfZ0130', N'HB-600', NULL),
  (50, 1002, 5, 'FEntrySelfZ0131', N'41', N'新星五金厂 Nova Hardware'),
  (50, 1002, 6, 'FEntrySelfZ0130', N'SD-1000', NULL),
  (50, 1002, 6, 'FEntrySelfZ0131', N'42', N'远东皮革 Far East Leather'),
  (50, 1002, 6, 'FEntrySelfZ0132', N'2', N'抽检 Sampled'),
  (50, 1002, 7, 'FEntrySelfZ0132', N'1', N'免检 Not inspected')
GO
