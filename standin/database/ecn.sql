-- Change notices of the factory beside those of factory.sql.
--
-- Change 7 wants made-to-order bikes in the planning BOM 2002: a tenth of the family. It takes ten parts in a hundred from
-- the city bike, but its maker has forgotten the line for the made-to-order bike: 50 and 40 make 90. It waits to be saved.
INSERT INTO IcEcn (FInterID, FBillNo, FDate, FStatus, FBomInterID, FCBomInterID, FCBomNumber, FBillerID, FNote) VALUES
  (7, 'ECN000007', '2026-03-30', 1, 2002, 0, 'PLN000002', 16403, N'定制车占一成 One in ten is made to order')
INSERT INTO IcEcnEntry
  (FInterID, FEntryID, FChildID, FChangeType, FItemID, FUnitID, FAuxQty, FQty, FPercent, FStockID) VALUES
  (7, 1, 1, 11022, 101, 101, 1, 1, 50, 803)
UPDATE ICMaxNum SET FMaxNum = 7 WHERE FTableName = 'IcEcn'
UPDATE ICBillNo SET FCurNo = 7 WHERE FBillID = 571
GO
