-- A small bicycle factory.
--
-- Users          16394 administrator, 16401 engineer (maker of the BOMs), 16402 auditor, 16403 planner
-- Units          101 piece, 102 dozen (12), 103 pair (2), 104 set (no coefficient), 201 kilogram, 202 gram (0.001),
--                301 metre, 302 roll (coefficient 50, scale 0.5)
-- Items          101 city bike, 102 mountain bike, 103 made-to-order bike (configured), 104 bicycle family (planning),
--                201 frame, 202 front wheel, 203 rear wheel, 204 drivetrain (phantom), 301..311 parts (311 deleted),
--                401, 402 materials, 501 colour and 504 saddle (features) with their options 502, 503 and 505, 506
-- Customers      901, 902
-- BOM groups     1 finished goods > 2 city bikes, 3 mountain bikes > 7 prototypes (empty); 4 assemblies > 5 wheels;
--                6 configuration
-- BOMs           1001 city bike 1.0, not in use            1002 city bike 2.0, in use, audited; orders refer to it
--                1003 mountain bike, in use, not audited, FEcnInterID NULL;
--                    and like 1005's its base quantities are still to be computed
--                1004 frame, in use, audited               1005 front wheel, in use, not audited, odd units
--                1006 rear wheel 1.0, not in use           1007 drivetrain, in use, audited
--                1008 rear wheel 2.0, made by change 5: FEcnInterID 5
--                1009 city bike 3.0, a draft               1010 cancelled, with a deleted part
--                2001 configuration of item 103            2002 planning BOM of item 104 (60 % + 40 %)
--                2003 colours, 2004 saddles (feature BOMs, percentages)
--                3001 customer BOM made from 2001, with 3002 as its frame; 3003 another one, disabled
-- Changes        5 started: 1006 became 1008; 6 saved: city bike 1002 is to become 'BOM000011'
-- Routings       701 bicycle assembly, 702 wheel building
-- Sub-messages   1072 in use, 1073 not in use, 371 ordinary line, 385 general, 1059 no back-flush, 40001..40004 operations

INSERT INTO t_User (FUserID, FName, FDescription) VALUES
  (16394, N'Administrator', N'系统管理员 System administrator'),
  (16401, N'李明', N'产品工程师 Product engineer'),
  (16402, N'王芳', N'审核员 Auditor'),
  (16403, N'陈刚', N'计划员 Planner')
INSERT INTO t_SystemProfile (FCategory, FKey, FValue, FDescription) VALUES
  (N'IC', N'UseShortNumber', N'0', N'单据显示物料短代码 Show short item numbers'),
  (N'IC', N'SameUserApprovalAndUnApproval', N'1', N'审核人与反审核人必须为同一人 Only the auditor may un-audit'),
  (N'IC', N'EnableEcnRight', N'0', N'工程变更允许有效期不重叠的相同物料 Changes may add an item twice in different periods'),
  (N'General', N'SingleMan', N'0', N'允许制单人审核自己的单据 The maker may audit his own bill'),
  (N'General', N'CompanyName', N'飞驰自行车厂 Swift Bicycle Works', N'公司名称 Name of the company')
GO

INSERT INTO t_MeasureUnit (FMeasureUnitID, FItemID, FUnitGroupID, FNumber, FName, FCoefficient, FScale, FStandard) VALUES
  (101, 101, 1, 'PCS', N'件', 1, 0, 1),
  (102, 102, 1, 'DOZ', N'打', 12, NULL, 0),
  (103, 103, 1, 'PR', N'副', 2, 0, 0),
  (104, 104, 1, 'SET', N'套', NULL, NULL, 0),
  (201, 201, 2, 'KG', N'千克', 1, 0, 1),
  (202, 202, 2, 'G', N'克', 0.001, 0, 0),
  (301, 301, 3, 'M', N'米', 1, 0, 1),
  (302, 302, 3, 'ROLL', N'卷', 50, 0.5, 0)
INSERT INTO t_SubMessage (FInterID, FTypeID, FID, FName) VALUES
  (1, 210, 'WG', N'外购 Purchased'),
  (2, 210, 'ZZ', N'自制 Made'),
  (3, 210, 'WW', N'委外加工 Subcontracted'),
  (5, 210, 'PZ', N'配置类 Configured'),
  (6, 210, 'GH', N'规划类 Planning'),
  (7, 210, 'TZ', N'特征类 Feature'),
  (9, 210, 'XN', N'虚拟件 Phantom'),
  (341, 36, 'SY', N'使用 In use'),
  (342, 36, 'JY', N'逐步淘汰 Running out'),
  (371, 40, 'PT', N'普通件 Ordinary'),
  (372, 40, 'LC', N'联产品 Co-product'),
  (385, 42, 'TY', N'通用 General'),
  (386, 42, 'KX', N'可选 Optional'),
  (387, 42, 'TZJ', N'特征件 Feature'),
  (1058, 170, 'Y', N'是 Yes'),
  (1059, 170, 'N', N'否 No'),
  (1072, 175, 'SY', N'使用 In use'),
  (1073, 175, 'WSY', N'未使用 Not in use'),
  (1054, 172, 'PTDD', N'普通订单 Ordinary order'),
  (1055, 172, 'FGDD', N'返工订单 Rework order'),
  (1067, 172, 'CFSC', N'重复生产 Repetitive production'),
  (11060, 172, 'WWDD', N'委外加工 Subcontract order'),
  (11021, 400, 'ADD', N'新增 Added'),
  (11022, 400, 'ALT', N'修改 Altered'),
  (11023, 400, 'DEL', N'删除 Deleted'),
  (40001, 61, 'CUT', N'下料 Cutting'),
  (40002, 61, 'WELD', N'焊接 Welding'),
  (40003, 61, 'PAINT', N'喷漆 Painting'),
  (40004, 61, 'ASM', N'装配 Assembly')
INSERT INTO t_Stock (FItemID, FNumber, FName) VALUES
  (801, '01', N'原料仓 Raw materials'),
  (802, '02', N'零件仓 Parts'),
  (803, '03', N'成品仓 Finished goods')
INSERT INTO t_StockPlace (FSPID, FNumber, FName) VALUES
  (0, '*', N'*'),
  (11, 'A-01', N'A区01架 Rack A-01'),
  (12, 'B-01', N'B区01架 Rack B-01')
INSERT INTO t_AuxItem (FItemID, FNumber, FName) VALUES
  (51, 'RED', N'红色 Red'),
  (52, 'BLUE', N'蓝色 Blue')
GO

-- Customers, then groups of materials (FDetail 0), then materials.
INSERT INTO t_Item (FItemID, FItemClassID, FNumber, FShortNumber, FName, FParentID, FLevel, FDetail, FDeleted) VALUES
  (901, 1, 'C01', 'C01', N'城市骑行俱乐部 City Riders Club', 0, 1, 1, 0),
  (902, 1, 'C02', 'C02', N'山地旅行社 Hill Tours', 0, 1, 1, 0),
  (11, 4, '01', '01', N'成品 Finished goods', 0, 1, 0, 0),
  (12, 4, '02', '02', N'部件 Assemblies', 0, 1, 0, 0),
  (13, 4, '03', '03', N'零件 Parts', 0, 1, 0, 0),
  (14, 4, '04', '04', N'原材料 Raw materials', 0, 1, 0, 0),
  (15, 4, '05', '05', N'特征与选项 Features and options', 0, 1, 0, 0),
  (101, 4, '01.001', '001', N'城市自行车 City bike', 11, 2, 1, 0),
  (102, 4, '01.002', '002', N'山地自行车 Mountain bike', 11, 2, 1, 0),
  (103, 4, '01.003', '003', N'定制自行车 Made-to-order bike', 11, 2, 1, 0),
  (104, 4, '01.004', '004', N'自行车系列 Bicycle family', 11, 2, 1, 0),
  (201, 4, '02.001', '001', N'车架 Frame', 12, 2, 1, 0),
  (202, 4, '02.002', '002', N'前轮 Front wheel', 12, 2, 1, 0),
  (203, 4, '02.003', '003', N'后轮 Rear wheel', 12, 2, 1, 0),
  (204, 4, '02.004', '004', N'传动系统 Drivetrain', 12, 2, 1, 0),
  (301, 4, '03.001', '001', N'车把 Handlebar', 13, 2, 1, 0),
  (302, 4, '03.002', '002', N'车座 Saddle', 13, 2, 1, 0),
  (303, 4, '03.003', '003', N'脚踏 Pedal', 13, 2, 1, 0),
  (304, 4, '03.004', '004', N'辐条 Spoke', 13, 2, 1, 0),
  (305, 4, '03.005', '005', N'轮圈 Rim', 13, 2, 1, 0),
  (306, 4, '03.006', '006', N'轮胎 Tyre', 13, 2, 1, 0),
  (307, 4, '03.007', '007', N'链条 Chain', 13, 2, 1, 0),
  (308, 4, '03.008', '008', N'刹车线 Brake cable', 13, 2, 1, 0),
  (309, 4, '03.009', '009', N'车铃 Bell', 13, 2, 1, 0),
  (310, 4, '03.010', '010', N'车筐 Basket', 13, 2, 1, 0),
  (311, 4, '03.011', '011', N'旧式车灯 Old lamp', 13, 2, 1, 1),
  (401, 4, '04.001', '001', N'钢管 Steel tube', 14, 2, 1, 0),
  (402, 4, '04.002', '002', N'油漆 Paint', 14, 2, 1, 0),
  (501, 4, '05.001', '001', N'颜色 Colour', 15, 2, 1, 0),
  (502, 4, '05.002', '002', N'红色漆 Red finish', 15, 2, 1, 0),
  (503, 4, '05.003', '003', N'蓝色漆 Blue finish', 15, 2, 1, 0),
  (504, 4, '05.004', '004', N'车座类型 Kind of saddle', 15, 2, 1, 0),
  (505, 4, '05.005', '005', N'舒适车座 Comfort saddle', 15, 2, 1, 0),
  (506, 4, '05.006', '006', N'运动车座 Sport saddle', 15, 2, 1, 0)
GO

INSERT INTO t_ICItem
  (FItemID, FNumber, FShortNumber, FName, FModel, FHelpCode, FParentID, FErpClsID, FUnitGroupID, FUnitID, FCUUnitID, FQtyDecimal, FIsKeyItem, FFixLeadTime, FDeleted) VALUES
  (101, '01.001', '001', N'城市自行车 City bike', N'CB-28', 'CSZXC', 11, 2, 1, 101, 101, 0, 1, 2, 0),
  (102, '01.002', '002', N'山地自行车 Mountain bike', N'MB-29', 'SDZXC', 11, 2, 1, 101, 101, 0, 1, 3, 0),
  (103, '01.003', '003', N'定制自行车 Made-to-order bike', N'TO-28', 'DZZXC', 11, 5, 1, 101, 101, 0, 1, 5, 0),
  (104, '01.004', '004', N'自行车系列 Bicycle family', N'', 'ZXCXL', 11, 6, 1, 101, 101, 0, 0, 0, 0),
  (201, '02.001', '001', N'车架 Frame', N'ST-54', 'CJ', 12, 2, 1, 101, 101, 0, 1, 1, 0),
  (202, '02.002', '002', N'前轮 Front wheel', N'W28-F', 'QL', 12, 2, 1, 101, 101, 0, 0, 1, 0),
  (203, '02.003', '003', N'后轮 Rear wheel', N'W28-R', 'HL', 12, 2, 1, 101, 101, 0, 0, 1, 0),
  (204, '02.004', '004', N'传动系统 Drivetrain', N'D-7', 'CDXT', 12, 9, 1, 104, 104, 0, 0, 0, 0),
  (301, '03.001', '001', N'车把 Handlebar', N'H-60', 'CB', 13, 1, 1, 101, 101, 0, 0, 4, 0),
  (302, '03.002', '002', N'车座 Saddle', N'S-1', 'CZ', 13, 1, 1, 101, 101, 0, 0, 4, 0),
  (303, '03.003', '003', N'脚踏 Pedal', N'P-1', 'JT', 13, 1, 1, 101, 103, 0, 0, 4, 0),
  (304, '03.004', '004', N'辐条 Spoke', N'2.0x290', 'FT', 13, 1, 1, 101, 102, 0, 0, 6, 0),
  (305, '03.005', '005', N'轮圈 Rim', N'28', 'LQ', 13, 1, 1, 101, 101, 0, 0, 6, 0),
  (306, '03.006', '006', N'轮胎 Tyre', N'28x1.6', 'LT', 13, 1, 1, 101, 101, 0, 0, 3, 0),
  (307, '03.007', '007', N'链条 Chain', N'112', 'LTIAO', 13, 1, 1, 101, 101, 0, 0, 3, 0),
  (308, '03.008', '008', N'刹车线 Brake cable', N'1.5', 'SCX', 13, 1, 3, 301, 302, 2, 0, 3, 0),
  (309, '03.009', '009', N'车铃 Bell', N'', 'CL', 13, 1, 1, 101, 101, 0, 0, 2, 0),
  (310, '03.010', '010', N'车筐 Basket', N'30', 'CK', 13, 1, 1, 101, 101, 0, 0, 2, 0),
  (311, '03.011', '011', N'旧式车灯 Old lamp', N'', 'CD', 13, 1, 1, 101, 101, 0, 0, 2, 1),
  (401, '04.001', '001', N'钢管 Steel tube', N'28.6x0.9', 'GG', 14, 1, 2, 201, 201, 3, 1, 7, 0),
  (402, '04.002', '002', N'油漆 Paint', N'', 'YQ', 14, 1, 2, 201, 202, 3, 0, 5, 0),
  (501, '05.001', '001', N'颜色 Colour', N'', 'YS', 15, 7, 1, 101, 101, 0, 0, 0, 0),
  (502, '05.002', '002', N'红色漆 Red finish', N'RAL 3020', 'HSQ', 15, 1, 2, 201, 202, 3, 0, 5, 0),
  (503, '05.003', '003', N'蓝色漆 Blue finish', N'RAL 5015', 'LSQ', 15, 1, 2, 201, 202, 3, 0, 5, 0),
  (504, '05.004', '004', N'车座类型 Kind of saddle', N'', 'CZLX', 15, 7, 1, 101, 101, 0, 0, 0, 0),
  (505, '05.005', '005', N'舒适车座 Comfort saddle', N'S-C', 'SSCZ', 15, 1, 1, 101, 101, 0, 0, 4, 0),
  (506, '05.006', '006', N'运动车座 Sport saddle', N'S-S', 'YDCZ', 15, 1, 1, 101, 101, 0, 0, 4, 0)
GO

INSERT INTO T_routing (FInterID, FBillNo, FRoutingName, FItemID) VALUES
  (701, 'RT001', N'自行车总装 Bicycle assembly', 101),
  (702, 'RT002', N'编轮 Wheel building', 203)
INSERT INTO T_Routingoper (FInterID, FEntryID, FOperSN, FOperID, FTimeRun) VALUES
  (701, 1, 10, 40003, 0.25),
  (701, 2, 20, 40004, 0.5),
  (702, 1, 10, 40004, 0.3)
GO

INSERT INTO ICBOMGroup (FInterID, FNumber, FName, FParentID, FBootID) VALUES
  (1, '01', N'成品 Finished goods', 0, 1),
  (2, '01.01', N'城市车 City bikes', 1, 1),
  (3, '01.02', N'山地车 Mountain bikes', 1, 1),
  (4, '02', N'部件 Assemblies', 0, 4),
  (5, '02.01', N'车轮 Wheels', 4, 4),
  (6, '03', N'配置 Configuration', 0, 6),
  (7, '01.02.01', N'样车 Prototypes', 3, 1)
GO

-- Ordinary BOMs.
INSERT INTO ICBOM
  (FInterID, FBOMNumber, FUseStatus, FVersion, FParentID, FItemID, FUnitID, FQty, FAuxQty, FRoutingID, FStatus, FCancellation,
   FCheckID, FCheckDate, FOperatorID, FEnterTime, FCheckerID, FAudDate, FBeenChecked, FEcnInterID, FNote) VALUES
  (1001, 'BOM000001', 1073, N'1.0', 2, 101, 101, 1, 1, 701, 0, 0, 16401, '2026-01-12', 16401, '2026-01-12', NULL, NULL, 0, 0, N'首版 First version'),
  (1002, 'BOM000002', 1072, N'2.0', 2, 101, 101, 1, 1, 701, 1, 0, 16401, '2026-02-02', 16401, '2026-02-02', 16402, '2026-02-03', 1, 0, N'加装车筐 With a basket'),
  (1003, 'BOM000003', 1072, N'1.0', 3, 102, 101, 1, 1, 0, 0, 0, 16401, '2026-02-10', 16401, '2026-02-10', NULL, NULL, 0, NULL, N''),
  (1004, 'BOM000004', 1072, N'1.0', 4, 201, 101, 1, 1, 0, 1, 0, 16401, '2026-01-10', 16401, '2026-01-10', 16402, '2026-01-11', 1, 0, N''),
  (1005, 'BOM000005', 1072, N'1.0', 5, 202, 101, 1, 1, 702, 0, 0, 16401, '2026-01-10', 16401, '2026-01-10', NULL, NULL, 0, NULL, N'辐条按打领用 Spokes are issued by the dozen'),
  (1006, 'BOM000006', 1073, N'1.0', 5, 203, 101, 1, 1, 702, 1, 0, 16401, '2026-01-10', 16401, '2026-01-10', 16402, '2026-01-11', 1, 0, N''),
  (1007, 'BOM000007', 1072, N'1.0', 4, 204, 104, 1, 1, 0, 1, 0, 16401, '2026-01-10', 16401, '2026-01-10', 16402, '2026-01-11', 1, 0, N''),
  (1008, 'BOM000008', 1072, N'2.0', 5, 203, 101, 1, 1, 702, 1, 0, 16402, '2026-03-02', 16402, '2026-03-02', 16402, '2026-03-02', 0, 5, N''),
  (1009, 'BOM000009', 1073, N'3.0', 2, 101, 101, 1, 1, 799, 0, 0, 16403, '2026-03-20', 16403, '2026-03-20', NULL, NULL, 0, NULL, N'草稿 Draft'),
  (1010, 'BOM000010', 1073, N'0.1', 2, 101, 101, 1, 1, 0, 0, 1, 16403, '2025-11-05', 16403, '2025-11-05', NULL, NULL, 0, 0, N'作废 Cancelled')
INSERT INTO ICBOMChild
  (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FScrap, FOperSN, FOperID, FStockID, FSPID, FPercent, FBeginDay, FEndDay, FNote) VALUES
  (1001, 1, 201, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1001, 2, 202, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1001, 3, 203, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1001, 4, 311, 101, 1, 1, 0, 20, 40004, 802, 11, 100, '2020-01-01', '2020-12-31', N'旧式车灯 The old lamp'),
  (1002, 1, 201, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 2, 202, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 3, 203, 101, 1, 1, 0, 20, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 4, 204, 104, 1, 1, 0, 20, 40004, 0, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 5, 301, 101, 1, 1, 0, 20, 40004, 802, 11, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 6, 302, 101, 1, 1, 0, 20, 40004, 802, 11, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 7, 308, 301, 2.5, 2.5, 4, 20, 40004, 802, 12, 100, '1900-01-01', '2100-01-01', N''),
  (1002, 8, 310, 101, 1, 1, 0, 20, 40004, 802, 12, 100, '2026-02-01', '2026-12-31', N'夏季促销 Summer offer'),
  (1002, 9, 402, 202, 180, 0.18, 5, 10, 40003, 801, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1003, 1, 201, 101, 1, 1, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1003, 2, 202, 101, 1, 1, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1003, 3, 203, 101, 1, 1, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1003, 4, 303, 103, 1, 0, 0, 0, 40004, 802, 11, 100, '1900-01-01', '2100-01-01', N'一副两只 One pair is two'),
  (1004, 1, 401, 201, 3.2, 3.2, 8, 10, 40001, 801, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1004, 2, 402, 202, 150, 0.15, 5, 30, 40003, 801, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1005, 1, 305, 101, 1, 0, 0, 10, 40004, 802, 0, 100, '2026-01-01', '2030-12-31', N''),
  (1005, 2, 304, 102, 3, 0, 2, 10, 40004, 802, 0, 100, '2026-01-01', '2030-12-31', N'三打 Three dozen'),
  (1005, 3, 306, 104, 1, 0, 0, 10, 40004, 802, 0, 100, '2026-01-01', '2030-12-31', N''),
  (1005, 4, 308, 302, 2, 0, 0, 10, 40004, 802, 0, 100, '2026-01-01', '2030-12-31', N''),
  (1005, 5, 309, 999, 1, 7, 0, 10, 40004, 802, 0, 100, '2026-01-01', '2030-12-31', N'单位未定义 Its unit is unknown'),
  (1006, 1, 305, 101, 1, 1, 0, 10, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1006, 2, 304, 102, 3, 36, 2, 10, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1006, 3, 306, 101, 1, 1, 0, 10, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1007, 1, 307, 101, 1, 1, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1007, 2, 303, 103, 1, 2, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1008, 1, 305, 101, 1, 1, 0, 0, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1008, 2, 304, 101, 32, 32, 2, 0, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N'三十二根 Thirty-two spokes'),
  (1008, 3, 306, 101, 1, 1, 0, 0, 40004, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1009, 1, 201, 101, 1, 1, 0, 10, 40002, 802, 0, 100, '1900-01-01', '2100-01-01', N''),
  (1010, 1, 311, 101, 2, 2, 0, 0, 0, 802, 0, 100, '1900-01-01', '2100-01-01', N'')
GO

-- Configuration (1), planning (2) and feature BOMs (4).
INSERT INTO ICBOM
  (FInterID, FBOMNumber, FUseStatus, FVersion, FParentID, FItemID, FUnitID, FBomType, FStatus, FCheckID, FCheckDate, FOperatorID,
   FEnterTime, FCheckerID, FAudDate, FBeenChecked, FEcnInterID, FNote) VALUES
  (2001, 'CFG000001', 1072, N'1.0', 6, 103, 101, 1, 1, 16401, '2026-03-01', 16401, '2026-03-01', 16402, '2026-03-02', 1, 0, N''),
  (2002, 'PLN000001', 1072, N'1.0', 1, 104, 101, 2, 0, 16403, '2026-03-01', 16403, '2026-03-01', NULL, NULL, 0, 0, N'六成城市车 Six in ten are city bikes'),
  (2003, 'FTR000001', 1072, N'1.0', 6, 501, 101, 4, 1, 16401, '2026-03-01', 16401, '2026-03-01', 16402, '2026-03-02', 1, 0, N''),
  (2004, 'FTR000002', 1072, N'1.0', 6, 504, 101, 4, 1, 16401, '2026-03-01', 16401, '2026-03-01', 16402, '2026-03-02', 1, 0, N'')
INSERT INTO ICBOMChild (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FMarshalType, FPercent, FStockID) VALUES
  (2001, 1, 201, 101, 1, 1, 385, 100, 802),
  (2001, 2, 202, 101, 1, 1, 385, 100, 802),
  (2001, 3, 203, 101, 1, 1, 385, 100, 802),
  (2001, 4, 501, 101, 1, 1, 387, 100, 0),
  (2001, 5, 504, 101, 1, 1, 387, 100, 0),
  (2001, 6, 310, 101, 1, 1, 386, 100, 802),
  (2002, 1, 101, 101, 1, 1, 385, 60, 803),
  (2002, 2, 102, 101, 1, 1, 385, 40, 803),
  (2003, 1, 502, 202, 180, 0.18, 386, 50, 801),
  (2003, 2, 503, 202, 180, 0.18, 386, 50, 801),
  (2004, 1, 505, 101, 1, 1, 386, 70, 802),
  (2004, 2, 506, 101, 1, 1, 386, 30, 802)
GO

-- Customer BOMs (3): FParentID is the configuration BOM.
INSERT INTO ICBOM
  (FInterID, FBOMNumber, FUseStatus, FVersion, FParentID, FItemID, FUnitID, FBomType, FCustID, FCustItemID, FStatus, FCheckID,
   FCheckDate, FOperatorID, FEnterTime, FCheckerID, FAudDate, FBeenChecked, FEcnInterID, FForbid, FNote) VALUES
  (3001, 'KH0001', 1072, N'1.0', 2001, 103, 101, 3, 901, 103, 1, 16401, '2026-04-01', 16401, '2026-04-01', 16402, '2026-04-02', 1, 0, 0, N'俱乐部用车 For the club'),
  (3002, 'KH0002', 1072, N'1.0', 2001, 201, 101, 3, 901, 103, 1, 16401, '2026-04-01', 16401, '2026-04-01', 16402, '2026-04-02', 1, 0, 0, N'俱乐部用车的车架 Its frame'),
  (3003, 'KH0003', 1073, N'1.0', 2001, 103, 101, 3, 902, 103, 0, 16401, '2026-04-08', 16401, '2026-04-08', NULL, NULL, 0, 0, -1, N'')
INSERT INTO ICCustBOMChild
  (FInterID, FEntryID, FItemID, FUnitID, FAuxQty, FQty, FMarshalType, FOrgMarshalType, FCharacterItemId, FStockID, FCustBOMCode) VALUES
  (3001, 1, 201, 101, 1, 1, 385, 385, 0, 802, 3002),
  (3001, 2, 202, 101, 1, 1, 385, 385, 0, 802, NULL),
  (3001, 3, 203, 101, 1, 1, 385, 385, 0, 802, NULL),
  (3001, 4, 502, 202, 180, 0.18, 385, 387, 501, 801, NULL),
  (3001, 5, 505, 101, 1, 1, 385, 387, 504, 802, NULL),
  (3001, 6, 304, 102, 3, 0, 385, 385, 0, 802, NULL),
  (3002, 1, 401, 201, 3.2, 3.2, 385, 385, 0, 801, NULL),
  (3002, 2, 502, 202, 150, 0.15, 385, 387, 501, 801, NULL),
  (3003, 1, 201, 101, 1, 1, 385, 385, 0, 802, NULL),
  (3003, 2, 506, 101, 1, 1, 385, 387, 504, 802, NULL)
INSERT INTO t_BOMRule (FInterID, FNumber, FName, FItemID) VALUES
  (1, 'R001', N'红色车配舒适车座 Red goes with the comfort saddle', 502),
  (2, 'R002', N'蓝色车不配车筐 Blue excludes the basket', 503)
INSERT INTO t_BOMRuleEntry (FInterID, FEntryID, FEntryItemID, FGroupItemID, FRuleID) VALUES
  (1, 1, 505, 0, 'Rel'),
  (1, 2, 309, 13, 'Rel'),
  (2, 1, 310, 0, 'Mut')
GO

-- Change 5 has made BOM 1008 of BOM 1006: spokes by the piece. Change 6 waits: a bell is added, the saddle becomes the
-- comfort saddle, the basket goes.
INSERT INTO IcEcn (FInterID, FBillNo, FDate, FStatus, FBomInterID, FCBomInterID, FCBomNumber, FStarUperID, FStarUpDate, FBillerID, FNote) VALUES
  (5, 'ECN000005', '2026-03-01', 2, 1006, 1008, 'BOM000008', 16402, '2026-03-02', 16401, N'辐条按根计量 Spokes by the piece'),
  (6, 'ECN000006', '2026-04-10', 1, 1002, 0, 'BOM000011', NULL, NULL, 16401, N'')
INSERT INTO IcEcnEntry
  (FInterID, FEntryID, FChildID, FChangeType, FItemID, FUnitID, FAuxQty, FQty, FScrap, FOperSN, FOperID, FStockID, FSPID) VALUES
  (5, 1, 2, 11022, 304, 101, 32, 32, 2, 10, 40004, 802, 0),
  (6, 1, 0, 11021, 309, 101, 1, 1, 0, 20, 40004, 802, 12),
  (6, 2, 6, 11022, 505, 101, 1, 1, 0, 20, 40004, 802, 11),
  (6, 3, 8, 11023, 310, 101, 1, 1, 0, 20, 40004, 802, 12)
GO

-- What uses the BOMs.
INSERT INTO cbCostObj (FItemID, FNumber, FName, FStdID, FBomID) VALUES
  (6001, 'CO001', N'城市自行车 City bike', 101, 1002),
  (6002, 'CO002', N'车架 Frame', 201, 1004)
INSERT INTO SEOrderEntry (FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, FPrice, FDate, FBomInterID) VALUES
  (5001, 1, 101, 101, 20, 20, 1280, '2026-05-15', 1002),
  (5001, 2, 102, 101, 5, 5, 2960, '2026-05-15', 0),
  (5002, 1, 103, 101, 10, 10, 1980, '2026-05-30', 3001)
INSERT INTO IcorderBatchTrace (FInterID, FEntryID, FBatchNo, FCustBomId, FQty) VALUES
  (5002, 1, 'B20260530', 3001, 10)
INSERT INTO ICMO (FInterID, FBillNo, FType, FStatus, FItemID, FUnitID, FQty, FAuxQty, FPlanCommitDate, FPlanFinishDate, FRoutingID, FBomInterID) VALUES
  (4001, 'WORK000001', 1054, 1, 101, 101, 20, 20, '2026-05-04', '2026-05-08', 701, 1002),
  (4002, 'WORK000002', 1067, 1, 203, 101, 200, 200, '2026-05-04', '2026-05-29', 702, 1008),
  (4003, 'WORK000003', 11060, 0, 201, 101, 40, 40, '2026-05-04', '2026-05-20', 0, 1004)
INSERT INTO IcMrpResult (FInterID, FBillNo, FItemID, FPlanQty, FNeedDate, FBom) VALUES
  (4501, 'PL000001', 203, 35, '2026-05-06', 1008)
INSERT INTO t_SubsItem (FInterID, FItemID, FSubsItemID, FQty, FApplicableBom) VALUES
  (1, 302, 505, 1, 1002)
INSERT INTO PPOrder (FInterID, FBillNo, FDate, FBillerID, FStatus) VALUES
  (1, 'FC000001', '2026-04-20', 16403, 0)
INSERT INTO PPOrderEntry (FInterID, FEntryID, FItemID, FUnitID, FQty, FAuxQty, FNeedDate, FBomInterID) VALUES
  (1, 1, 101, 101, 120, 120, '2026-06-30', 1002),
  (1, 2, 102, 101, 60, 60, '2026-06-30', 1003)
GO

-- The highest ids issued, and the rules of bill numbers.
INSERT INTO ICMaxNum (FTableName, FMaxNum) VALUES
  ('ICBOM', 3003), ('ICBOMGroup', 7), ('IcEcn', 6), ('ICMO', 4003), ('PPOrder', 1), ('SEOrder', 5002)
INSERT INTO ICBillNo (FBillID, FBillName, FPreLetter, FSufLetter, FFormat, FCurNo) VALUES
  (50, N'BOM单', 'BOM', '', '000000', 11),
  (53, N'客户BOM', 'KH', '', '0000', 3),
  (85, N'生产任务单', 'WORK', '', '000000', 3),
  (87, N'产品预测单', 'FC', '', '000000', 1),
  (571, N'工程变更单', 'ECN', '', '000000', 6)
GO

-- Columns of the BOM browser's lists and of the queries, in three languages.
INSERT INTO ICTableFieldInfo
  (FNum, FCtlID, FCtlName, FCtlName_Cht, FCtlName_En, FLdgNum, FOrder, FCaption, FCaption_Cht, FCaption_En, FName, FAlign, FVisible, FDecCtl) VALUES
  (1, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 1, N'BOM单编号', N'BOM單編號', N'BOM Number', 'FBOMNumber', 0, '1', 0),
  (2, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 2, N'版本', N'版本', N'Version', 'FVersion', 0, '1', 0),
  (3, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 3, N'物料代码', N'物料代碼', N'Item Number', 'FNumber', 0, '1', 0),
  (4, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 4, N'物料名称', N'物料名稱', N'Item Name', 'FName', 0, '1', 0),
  (5, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 5, N'规格型号', N'規格型號', N'Model', 'FModel', 0, '1', 0),
  (6, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 6, N'单位', N'單位', N'Unit', 'FUnitID', 0, '1', 0),
  (7, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 7, N'数量', N'數量', N'Quantity', 'FAuxQty', 1, '1', 1),
  (8, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 8, N'成品率(%)', N'成品率(%)', N'Yield (%)', 'FYield', 1, '1', 1),
  (9, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 9, N'使用状态', N'使用狀態', N'Use Status', 'FUseStatus', 0, '1', 0),
  (10, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 10, N'审核状态', N'審核狀態', N'Audit Status', 'FStatus', 0, '1', 0),
  (11, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 0, 11, N'加工费', N'加工費', N'Processing Fee', 'FFee', 1, '0', 1),
  (1, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 1, N'行号', N'行號', N'Line', 'FEntryID', 1, '1', 0),
  (2, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 2, N'物料代码', N'物料代碼', N'Item Number', 'FNumber', 0, '1', 0),
  (3, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 3, N'物料名称', N'物料名稱', N'Item Name', 'FItemName', 0, '1', 0),
  (4, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 4, N'单位', N'單位', N'Unit', 'FUnitID', 0, '1', 0),
  (5, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 5, N'用量', N'用量', N'Quantity', 'FAuxQty', 1, '1', 1),
  (6, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 6, N'损耗率(%)', N'損耗率(%)', N'Scrap (%)', 'FScrap', 1, '1', 1),
  (7, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 7, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay', 0, '1', 0),
  (8, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 8, N'失效日期', N'失效日期', N'Valid To', 'FEndDay', 0, '1', 0),
  (9, 'BOM', N'BOM查询', N'BOM查詢', N'BOM Query', 1, 9, N'发料仓库', N'發料倉庫', N'Warehouse', 'FStockID', 0, '1', 0),
  (1, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 0, 1, N'客户BOM编号', N'客戶BOM編號', N'Customer BOM Number', 'FBOMNumber', 0, '1', 0),
  (2, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 0, 2, N'物料代码', N'物料代碼', N'Item Number', 'FNumber', 0, '1', 0),
  (3, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 0, 3, N'物料名称', N'物料名稱', N'Item Name', 'FName', 0, '1', 0),
  (4, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 0, 4, N'使用状态', N'使用狀態', N'Use Status', 'FUseStatus', 0, '1', 0),
  (1, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 1, 1, N'行号', N'行號', N'Line', 'FEntryID', 1, '1', 0),
  (2, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 1, 2, N'物料代码', N'物料代碼', N'Item Number', 'FNumber', 0, '1', 0),
  (3, 'CustBOM', N'客户BOM查询', N'客戶BOM查詢', N'Customer BOM Query', 1, 3, N'用量', N'用量', N'Quantity', 'FAuxQty', 1, '1', 1)
INSERT INTO ICTableFieldInfo
  (FNum, FCtlID, FCtlName, FCtlName_Cht, FCtlName_En, FLdgNum, FOrder, FCaption, FCaption_Cht, FCaption_En, FName) VALUES
  (1, 'OneGradeBOMQuery', N'BOM单级展开', N'BOM單級展開', N'Single-level BOM', 1, 1, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay'),
  (2, 'OneGradeBOMQuery', N'BOM单级展开', N'BOM單級展開', N'Single-level BOM', 1, 2, N'失效日期', N'失效日期', N'Valid To', 'FEndDay'),
  (1, 'MutiGradeBOMQuery', N'BOM多级展开', N'BOM多級展開', N'Multi-level BOM', 1, 1, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay'),
  (2, 'MutiGradeBOMQuery', N'BOM多级展开', N'BOM多級展開', N'Multi-level BOM', 1, 2, N'失效日期', N'失效日期', N'Valid To', 'FEndDay'),
  (1, 'OneGradeBOMQueryRev', N'BOM单级反查', N'BOM單級反查', N'Single-level Where-used', 1, 1, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay'),
  (2, 'OneGradeBOMQueryRev', N'BOM单级反查', N'BOM單級反查', N'Single-level Where-used', 1, 2, N'失效日期', N'失效日期', N'Valid To', 'FEndDay'),
  (1, 'MutiGradeBOMQueryRev', N'BOM多级反查', N'BOM多級反查', N'Multi-level Where-used', 1, 1, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay'),
  (2, 'MutiGradeBOMQueryRev', N'BOM多级反查', N'BOM多級反查', N'Multi-level Where-used', 1, 2, N'失效日期', N'失效日期', N'Valid To', 'FEndDay'),
  (1, 'BomTreeQuery', N'BOM树形查看', N'BOM樹形查看', N'BOM Tree', 1, 1, N'生效日期', N'生效日期', N'Valid From', 'FBeginDay'),
  (2, 'BomTreeQuery', N'BOM树形查看', N'BOM樹形查看', N'BOM Tree', 1, 2, N'失效日期', N'失效日期', N'Valid To', 'FEndDay')
GO

-- The template of the BOM bill: a few standard fields, and the ones that the factory added (FDefaultCtl 0).
INSERT INTO ICTransactionType (FID, FName, FTemplateID) VALUES
  (50, N'BOM单', 'Z01'),
  (53, N'客户BOM', 'Z03'),
  (87, N'产品预测单', 'P01')
INSERT INTO ICTemplate (FID, FCtlIndex, FFieldName, FCaption, FCaption_CHT, FCaption_EN, FCtlType, FLookUpCls, FRelateOutTbl, FDefaultCtl) VALUES
  ('Z01', 1, 'FBOMNumber', N'BOM单编号', N'BOM單編號', N'BOM Number', 0, -1, 0, 1),
  ('Z01', 2, 'FItemID', N'物料代码', N'物料代碼', N'Item', 1, 4, 0, 1),
  ('Z01', 40, 'FHeadSelfZ0140', N'图纸号', N'圖紙號', N'Drawing Number', 0, -1, 0, 0),
  ('Z01', 41, 'FHeadSelfZ0141', N'责任部门', N'責任部門', N'Department', 1, 2, 0, 0)
INSERT INTO ICTemplateEntry (FID, FCtlOrder, FFieldName, FHeadCaption, FHeadCaption_CHT, FHeadCaption_EN, FCtlType, FLookUpCls, FRelateOutTbl, FDefaultCtl) VALUES
  ('Z01', 1, 'FItemID', N'物料代码', N'物料代碼', N'Item', 1, 4, 0, 1),
  ('Z01', 2, 'FAuxQty', N'用量', N'用量', N'Quantity', 0, -1, 0, 1),
  ('Z01', 30, 'FEntrySelfZ0130', N'供应商料号', N'供應商料號', N'Supplier Part Number', 0, -1, 0, 0)
GO
