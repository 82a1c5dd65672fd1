-- The tables of the ERP database that bills of materials live in and touch.
--
-- Base data has primary keys. Bills have an index on their id and no key: ids are counted up in ICMaxNum by whoever
-- writes a bill, and an import without a counter row, or without lines, writes the same id again.
-- Flags are smallint and not bit: they are added up, and a disabled bill carries -1.

-- ---- bills of materials ----

CREATE TABLE ICBOM (
  FBrNo          varchar(10)    NOT NULL DEFAULT '0',
  FInterID       int            NOT NULL,
  FBOMNumber     varchar(300)   NOT NULL DEFAULT '',
  FUseStatus     int            NOT NULL DEFAULT 1073,     -- 1072 in use, 1073 not in use
  FVersion       nvarchar(300)  NULL DEFAULT '',
  FParentID      int            NOT NULL DEFAULT 0,        -- the group; of a customer BOM the configuration BOM
  FItemID        int            NOT NULL DEFAULT 0,
  FQty           decimal(28,10) NOT NULL DEFAULT 1,
  FYield         decimal(28,10) NOT NULL DEFAULT 100,
  FCheckID       int            NULL,                      -- the maker
  FCheckDate     datetime       NULL,
  FOperatorID    int            NULL,
  FEnterTime     varchar(10)    NULL,                      -- yyyy-mm-dd
  FStatus        int            NOT NULL DEFAULT 0,        -- 0 not audited, 1 audited
  FCancellation  smallint       NOT NULL DEFAULT 0,
  FTranType      int            NOT NULL DEFAULT 50,
  FRoutingID     int            NOT NULL DEFAULT 0,
  FBomType       int            NOT NULL DEFAULT 0,        -- 0 ordinary, 1 configuration, 2 planning, 3 customer, 4 feature
  FCustID        int            NOT NULL DEFAULT 0,
  FCustItemID    int            NOT NULL DEFAULT 0,
  FAccessories   smallint       NOT NULL DEFAULT 0,
  FNote          nvarchar(1000) NULL DEFAULT '',
  FUnitID        int            NOT NULL DEFAULT 0,
  FAuxQty        decimal(28,10) NOT NULL DEFAULT 1,
  FCheckerID     int            NULL,                      -- the auditor
  FAudDate       datetime       NULL,
  FEcnInterID    int            NULL,
  FBeenChecked   smallint       NOT NULL DEFAULT 0,
  FAuxPropID     int            NOT NULL DEFAULT 0,
  FForbid        smallint       NOT NULL DEFAULT 0,        -- -1 disabled
  FFee           decimal(28,10) NOT NULL DEFAULT 0,
  FGMPExpectQty  decimal(28,10) NOT NULL DEFAULT 0
)
CREATE INDEX IX_ICBOM ON ICBOM (FInterID)
CREATE INDEX IX_ICBOM_Number ON ICBOM (FBOMNumber)
CREATE INDEX IX_ICBOM_Item ON ICBOM (FItemID)
CREATE INDEX IX_ICBOM_Parent ON ICBOM (FParentID)
GO

CREATE TABLE ICBOMChild (
  FBrNo          varchar(10)    NOT NULL DEFAULT '0',
  FInterID       int            NOT NULL,
  FEntryID       int            NOT NULL,
  FItemID        int            NOT NULL,
  FAuxQty        decimal(28,10) NOT NULL DEFAULT 0,        -- in the line's unit
  FQty           decimal(28,10) NOT NULL DEFAULT 0,        -- in the base unit
  FScrap         decimal(28,10) NOT NULL DEFAULT 0,
  FOperSN        int            NOT NULL DEFAULT 0,
  FOperID        int            NOT NULL DEFAULT 0,
  FMachinePos    nvarchar(1000) NULL DEFAULT '',
  FNote          nvarchar(1000) NULL DEFAULT '',
  FMaterielType  int            NOT NULL DEFAULT 371,
  FMarshalType   int            NOT NULL DEFAULT 385,
  FPercent       decimal(28,10) NOT NULL DEFAULT 100,
  FBeginDay      datetime       NOT NULL DEFAULT '1900-01-01',
  FEndDay        datetime       NOT NULL DEFAULT '2100-01-01',
  FOffSetDay     decimal(28,10) NOT NULL DEFAULT 0,
  FBackFlush     int            NOT NULL DEFAULT 1059,
  FStockID       int            NULL DEFAULT 0,
  FSPID          int            NOT NULL DEFAULT 0,
  FSupply        smallint       NOT NULL DEFAULT 0,
  FUnitID        int            NOT NULL DEFAULT 0,
  FAuxPropID     int            NOT NULL DEFAULT 0,
  FGMPUnitID     int            NOT NULL DEFAULT 0,
  FGMPAuxQty     decimal(28,10) NOT NULL DEFAULT 0
)
CREATE INDEX IX_ICBOMChild ON ICBOMChild (FInterID, FEntryID)
CREATE INDEX IX_ICBOMChild_Item ON ICBOMChild (FItemID)
GO

CREATE TABLE ICCustBOMChild (
  FBrNo            varchar(10)    NOT NULL DEFAULT '0',
  FInterID         int            NOT NULL,
  FEntryID         int            NOT NULL,
  FItemID          int            NOT NULL,
  FAuxQty          decimal(28,10) NOT NULL DEFAULT 0,
  FQty             decimal(28,10) NOT NULL DEFAULT 0,
  FScrap           decimal(28,10) NOT NULL DEFAULT 0,
  FOperSN          int            NOT NULL DEFAULT 0,
  FOperID          int            NOT NULL DEFAULT 0,
  FMachinePos      nvarchar(1000) NULL DEFAULT '',
  FNote            nvarchar(1000) NULL DEFAULT '',
  FMaterielType    int            NOT NULL DEFAULT 371,
  FMarshalType     int            NOT NULL DEFAULT 385,
  FOrgMarshalType  int            NOT NULL DEFAULT 385,
  FPercent         decimal(28,10) NOT NULL DEFAULT 100,
  FBeginDay        datetime       NOT NULL DEFAULT '1900-01-01',
  FEndDay          datetime       NOT NULL DEFAULT '2100-01-01',
  FOffSetDay       decimal(28,10) NOT NULL DEFAULT 0,
  FBackFlush       int            NOT NULL DEFAULT 1059,
  FStockID         int            NULL DEFAULT 0,
  FSPID            int            NOT NULL DEFAULT 0,
  FSupply          smallint       NOT NULL DEFAULT 0,
  FUnitID          int            NOT NULL DEFAULT 0,
  FAuxPropID       int            NOT NULL DEFAULT 0,
  FCharacterItemId int            NOT NULL DEFAULT 0,      -- the feature item that the line was chosen for
  FCustBOMCode     int            NULL                     -- the customer BOM that the line is built from
)
CREATE INDEX IX_ICCustBOMChild ON ICCustBOMChild (FInterID, FEntryID)
CREATE INDEX IX_ICCustBOMChild_Code ON ICCustBOMChild (FCustBOMCode)
GO

CREATE TABLE ICBOMGroup (
  FBrNo      varchar(10)   NOT NULL DEFAULT '0',
  FInterID   int           NOT NULL,
  FNumber    varchar(200)  NOT NULL DEFAULT '',
  FName      nvarchar(200) NOT NULL DEFAULT '',
  FParentID  int           NOT NULL DEFAULT 0,             -- 0 for a top group
  FBootID    int           NULL                            -- the top group of its tree
)
CREATE INDEX IX_ICBOMGroup ON ICBOMGroup (FInterID)
GO

CREATE TABLE t_BOMRule (
  FInterID  int           NOT NULL PRIMARY KEY,
  FNumber   varchar(80)   NOT NULL DEFAULT '',
  FName     nvarchar(255) NOT NULL DEFAULT '',
  FItemID   int           NOT NULL
)
GO

CREATE TABLE t_BOMRuleEntry (
  FInterID      int         NOT NULL,
  FEntryID      int         NOT NULL,
  FEntryItemID  int         NOT NULL,
  FGroupItemID  int         NOT NULL DEFAULT 0,            -- 0 for all groups
  FRuleID       varchar(10) NOT NULL,                      -- Rel goes with, Mut excludes
  PRIMARY KEY (FInterID, FEntryID)
)
GO

-- ---- engineering changes ----

CREATE TABLE IcEcn (
  FBrNo         varchar(10)    NOT NULL DEFAULT '0',
  FInterID      int            NOT NULL,
  FBillNo       varchar(255)   NOT NULL DEFAULT '',
  FTranType     int            NOT NULL DEFAULT 571,
  FDate         datetime       NULL,
  FStatus       int            NULL DEFAULT 1,             -- 1 saved, 2 started
  FBomInterID   int            NOT NULL DEFAULT 0,         -- the BOM to be changed
  FCBomInterID  int            NOT NULL DEFAULT 0,         -- the BOM that the start created
  FCBomNumber   varchar(300)   NOT NULL DEFAULT '',
  FStarUperID   int            NULL,
  FStarUpDate   datetime       NULL,
  FBillerID     int            NULL,
  FCheckerID    int            NULL,
  FCheckDate    datetime       NULL,
  FCancellation smallint       NOT NULL DEFAULT 0,
  FNote         nvarchar(1000) NULL DEFAULT ''
)
CREATE INDEX IX_IcEcn ON IcEcn (FInterID)
GO

CREATE TABLE IcEcnEntry (
  FBrNo            varchar(10)    NOT NULL DEFAULT '0',
  FInterID         int            NOT NULL,
  FEntryID         int            NOT NULL,
  FChildID         int            NOT NULL DEFAULT 0,      -- the BOM line; 0 for an added one
  FChangeType      int            NOT NULL,                -- 11021 added, 11022 altered, 11023 deleted
  FItemID          int            NOT NULL DEFAULT 0,
  FUnitID          int            NOT NULL DEFAULT 0,
  FAuxQty          decimal(28,10) NOT NULL DEFAULT 0,
  FQty             decimal(28,10) NOT NULL DEFAULT 0,
  FScrap           decimal(28,10) NOT NULL DEFAULT 0,
  FOperSN          int            NOT NULL DEFAULT 0,
  FOperID          int            NOT NULL DEFAULT 0,
  FMachinePos      nvarchar(1000) NULL DEFAULT '',
  FMaterielType    int            NOT NULL DEFAULT 371,
  FMarshalType     int            NOT NULL DEFAULT 385,
  FBeginDay        datetime       NOT NULL DEFAULT '1900-01-01',
  FEndDay          datetime       NOT NULL DEFAULT '2100-01-01',
  FPercent         decimal(28,10) NOT NULL DEFAULT 100,
  FOffSetDay       decimal(28,10) NOT NULL DEFAULT 0,
  FBackFlush       int            NOT NULL DEFAULT 1059,
  FStockID         int            NULL DEFAULT 0,
  FSPID            int            NOT NULL DEFAULT 0,
  FSupply          smallint       NOT NULL DEFAULT 0,
  FNote            nvarchar(1000) NULL DEFAULT '',
  FOldItemID       int            NULL,
  FOldUnitID       int            NULL,
  FOldAuxQty       decimal(28,10) NULL,
  FOldQty          decimal(28,10) NULL,
  FOldScrap        decimal(28,10) NULL,
  FOldOperSN       int            NULL,
  FOldOperID       int            NULL,
  FOldMachinePos   nvarchar(1000) NULL,
  FOldMaterielType int            NULL,
  FOldMarshalType  int            NULL,
  FOldBeginDay     datetime       NULL,
  FOldEndDay       datetime       NULL,
  FOldPercent      decimal(28,10) NULL,
  FOldOffSetDay    decimal(28,10) NULL,
  FOldBackFlush    int            NULL,
  FOldStockID      int            NULL,
  FOLdSPID         int            NULL,
  FOldSupply       smallint       NULL,
  FOldNote         nvarchar(1000) NULL
)
CREATE INDEX IX_IcEcnEntry ON IcEcnEntry (FInterID, FEntryID)
GO

-- ---- numbering ----

CREATE TABLE ICMaxNum (
  FTableName  varchar(80) NOT NULL PRIMARY KEY,
  FMaxNum     int         NOT NULL DEFAULT 0               -- the highest id issued for the table
)
GO

CREATE TABLE ICBillNo (
  FBillID     int          NOT NULL PRIMARY KEY,
  FBillName   nvarchar(80) NOT NULL DEFAULT '',
  FPreLetter  varchar(30)  NULL DEFAULT '',
  FSufLetter  varchar(30)  NULL DEFAULT '',
  FFormat     varchar(30)  NULL DEFAULT '',
  FCurNo      int          NULL DEFAULT 0                  -- the last serial used
)
GO

-- ---- items and other base data ----

CREATE TABLE t_Item (
  FItemID       int           NOT NULL PRIMARY KEY,
  FItemClassID  int           NOT NULL,                    -- 1 customers, 4 materials
  FNumber       varchar(80)   NOT NULL,
  FShortNumber  varchar(80)   NOT NULL DEFAULT '',
  FName         nvarchar(255) NOT NULL,
  FFullName     nvarchar(255) NULL,
  FParentID     int           NOT NULL DEFAULT 0,
  FLevel        smallint      NOT NULL DEFAULT 1,
  FDetail       smallint      NOT NULL DEFAULT 1,          -- 0 for a group
  FDeleted      smallint      NOT NULL DEFAULT 0
)
CREATE INDEX IX_t_Item ON t_Item (FItemClassID, FNumber)
GO

CREATE TABLE t_ICItem (
  FItemID       int            NOT NULL PRIMARY KEY,
  FNumber       varchar(80)    NOT NULL,
  FShortNumber  varchar(80)    NOT NULL DEFAULT '',
  FName         nvarchar(255)  NOT NULL,
  FModel        nvarchar(255)  NULL DEFAULT '',
  FHelpCode     varchar(80)    NULL DEFAULT '',
  FParentID     int            NOT NULL DEFAULT 0,
  FErpClsID     int            NOT NULL DEFAULT 1,         -- a t_SubMessage row
  FUnitGroupID  int            NOT NULL DEFAULT 0,
  FUnitID       int            NOT NULL DEFAULT 0,
  FCUUnitID     int            NOT NULL DEFAULT 0,
  FQtyDecimal   smallint       NOT NULL DEFAULT 0,
  FPriceDecimal smallint       NOT NULL DEFAULT 2,
  FUseState     int            NOT NULL DEFAULT 341,       -- a t_SubMessage row
  FIsKeyItem    smallint       NOT NULL DEFAULT 0,
  FTrack        int            NOT NULL DEFAULT 76,
  FFixLeadTime  decimal(23,10) NOT NULL DEFAULT 0,
  FDefaultLoc   int            NOT NULL DEFAULT 0,
  FSPID         int            NOT NULL DEFAULT 0,
  FDeleted      smallint       NOT NULL DEFAULT 0
)
CREATE INDEX IX_t_ICItem_Number ON t_ICItem (FNumber)
GO

CREATE TABLE t_AuxItem (
  FItemID   int           NOT NULL PRIMARY KEY,
  FNumber   varchar(80)   NOT NULL,
  FName     nvarchar(255) NOT NULL,
  FDeleted  smallint      NOT NULL DEFAULT 0
)
GO

CREATE TABLE t_MeasureUnit (
  FMeasureUnitID  int            NOT NULL PRIMARY KEY,
  FItemID         int            NOT NULL,                 -- the same id, as an item
  FUnitGroupID    int            NOT NULL,
  FNumber         varchar(30)    NOT NULL,
  FName           nvarchar(80)   NOT NULL,
  FCoefficient    decimal(23,10) NULL,                     -- base units in one unit
  FScale          decimal(23,10) NULL,                     -- added to the coefficient
  FStandard       smallint       NOT NULL DEFAULT 0,
  FDeleted        smallint       NOT NULL DEFAULT 0
)
CREATE INDEX IX_t_MeasureUnit ON t_MeasureUnit (FItemID)
GO

CREATE TABLE t_Stock (
  FItemID   int          NOT NULL PRIMARY KEY,
  FNumber   varchar(80)  NOT NULL,
  FName     nvarchar(80) NOT NULL,
  FDeleted  smallint     NOT NULL DEFAULT 0
)
GO

CREATE TABLE t_StockPlace (
  FSPID     int          NOT NULL PRIMARY KEY,
  FNumber   varchar(80)  NOT NULL,
  FName     nvarchar(80) NOT NULL,
  FDeleted  smallint     NOT NULL DEFAULT 0
)
GO

CREATE TABLE t_SubMessage (
  FInterID  int          NOT NULL PRIMARY KEY,
  FTypeID   int          NOT NULL,
  FID       varchar(30)  NOT NULL,
  FName     nvarchar(80) NOT NULL,
  FDeleted  smallint     NOT NULL DEFAULT 0
)
GO

CREATE TABLE t_User (
  FUserID       int           NOT NULL PRIMARY KEY,
  FName         nvarchar(50)  NOT NULL,
  FDescription  nvarchar(255) NULL,
  FForbidden    smallint      NOT NULL DEFAULT 0
)
GO

CREATE TABLE t_SystemProfile (
  FCategory     nvarchar(30)  NOT NULL,
  FKey          nvarchar(30)  NOT NULL,
  FValue        nvarchar(255) NULL,
  FDescription  nvarchar(255) NULL,
  PRIMARY KEY (FCategory, FKey)
)
GO

CREATE TABLE t_components (
  FComponent     varchar(100) NOT NULL PRIMARY KEY,
  FComponentExt  varchar(100) NOT NULL
)
GO

-- ---- routings ----

CREATE TABLE T_routing (
  FInterID      int           NOT NULL PRIMARY KEY,
  FBillNo       varchar(80)   NOT NULL,
  FRoutingName  nvarchar(255) NOT NULL,
  FItemID       int           NOT NULL DEFAULT 0
)
GO

CREATE TABLE T_Routingoper (
  FInterID  int            NOT NULL,
  FEntryID  int            NOT NULL,
  FOperSN   int            NOT NULL,
  FOperID   int            NOT NULL,                       -- a t_SubMessage row of type 61
  FTimeRun  decimal(23,10) NOT NULL DEFAULT 0,
  PRIMARY KEY (FInterID, FEntryID)
)
GO

-- ---- documents that use a BOM ----

CREATE TABLE cbCostObj (
  FItemID  int           NOT NULL PRIMARY KEY,
  FNumber  varchar(80)   NOT NULL,
  FName    nvarchar(255) NOT NULL,
  FStdID   int           NOT NULL DEFAULT 0,
  FBomID   int           NOT NULL DEFAULT 0
)
CREATE INDEX IX_cbCostObj_Bom ON cbCostObj (FBomID)
GO

CREATE TABLE SEOrderEntry (
  FBrNo        varchar(10)    NOT NULL DEFAULT '0',
  FInterID     int            NOT NULL,
  FEntryID     int            NOT NULL,
  FItemID      int            NOT NULL,
  FUnitID      int            NOT NULL DEFAULT 0,
  FQty         decimal(28,10) NOT NULL DEFAULT 0,
  FAuxQty      decimal(28,10) NOT NULL DEFAULT 0,
  FPrice       decimal(28,10) NOT NULL DEFAULT 0,
  FDate        datetime       NULL,
  FNote        nvarchar(255)  NULL DEFAULT '',
  FBomInterID  int            NOT NULL DEFAULT 0
)
CREATE INDEX IX_SEOrderEntry ON SEOrderEntry (FInterID, FEntryID)
CREATE INDEX IX_SEOrderEntry_Bom ON SEOrderEntry (FBomInterID)
GO

CREATE TABLE IcorderBatchTrace (
  FInterID    int            NOT NULL,
  FEntryID    int            NOT NULL,
  FBatchNo    varchar(200)   NOT NULL DEFAULT '',
  FCustBomId  int            NOT NULL DEFAULT 0,
  FQty        decimal(28,10) NOT NULL DEFAULT 0
)
CREATE INDEX IX_IcorderBatchTrace ON IcorderBatchTrace (FCustBomId)
GO

CREATE TABLE ICMO (
  FBrNo          varchar(10)    NOT NULL DEFAULT '0',
  FInterID       int            NOT NULL,
  FBillNo        varchar(255)   NOT NULL DEFAULT '',
  FTranType      int            NOT NULL DEFAULT 85,
  FType          int            NOT NULL DEFAULT 1054,     -- 1054, 1055 ordinary, 1067 repetitive, 11060 subcontract
  FStatus        int            NOT NULL DEFAULT 0,
  FItemID        int            NOT NULL,
  FUnitID        int            NOT NULL DEFAULT 0,
  FQty           decimal(28,10) NOT NULL DEFAULT 0,
  FAuxQty        decimal(28,10) NOT NULL DEFAULT 0,
  FPlanCommitDate datetime      NULL,
  FPlanFinishDate datetime      NULL,
  FRoutingID     int            NOT NULL DEFAULT 0,
  FBomInterID    int            NOT NULL DEFAULT 0,
  FCancellation  smallint       NOT NULL DEFAULT 0
)
CREATE INDEX IX_ICMO ON ICMO (FInterID)
CREATE INDEX IX_ICMO_Bom ON ICMO (FBomInterID)
GO

CREATE TABLE IcMrpResult (
  FInterID    int            NOT NULL,
  FBillNo     varchar(255)   NOT NULL DEFAULT '',
  FItemID     int            NOT NULL,
  FPlanQty    decimal(28,10) NOT NULL DEFAULT 0,
  FNeedDate   datetime       NULL,
  FBom        int            NOT NULL DEFAULT 0
)
CREATE INDEX IX_IcMrpResult ON IcMrpResult (FBom)
GO

CREATE TABLE t_SubsItem (
  FInterID        int            NOT NULL,
  FItemID         int            NOT NULL,
  FSubsItemID     int            NOT NULL DEFAULT 0,
  FQty            decimal(28,10) NOT NULL DEFAULT 1,
  FApplicableBom  int            NOT NULL DEFAULT 0
)
CREATE INDEX IX_t_SubsItem ON t_SubsItem (FApplicableBom)
GO

-- The import of orders writes the check date into FCheckerID and the checker into FCheckDate: a date as text, and a
-- number that the server takes as days since 1900.
CREATE TABLE PPOrder (
  FBrNo          varchar(10)    NOT NULL DEFAULT '0',
  FInterID       int            NOT NULL,
  FBillNo        varchar(255)   NOT NULL DEFAULT '',
  FTranType      int            NOT NULL DEFAULT 87,
  FDate          datetime       NULL,
  FBillerID      int            NULL,
  FCheckerID     varchar(30)    NULL,
  FCheckDate     datetime       NULL,
  FStatus        int            NOT NULL DEFAULT 0,
  FCancellation  smallint       NOT NULL DEFAULT 0
)
CREATE INDEX IX_PPOrder ON PPOrder (FInterID)
GO

CREATE TABLE PPOrderEntry (
  FBrNo          varchar(10)    NOT NULL DEFAULT '0',
  FInterID       int            NOT NULL,
  FEntryID       int            NOT NULL,
  FItemID        int            NOT NULL,
  FUnitID        int            NOT NULL DEFAULT 0,
  FQty           decimal(28,10) NOT NULL DEFAULT 0,
  FAuxQty        decimal(28,10) NOT NULL DEFAULT 0,
  FCommitQty     decimal(28,10) NOT NULL DEFAULT 0,
  FAuxCommitQty  decimal(28,10) NOT NULL DEFAULT 0,
  FNeedDate      datetime       NULL,
  FNote          nvarchar(255)  NULL DEFAULT '',
  FBomInterID    int            NOT NULL DEFAULT 0
)
CREATE INDEX IX_PPOrderEntry ON PPOrderEntry (FInterID, FEntryID)
CREATE INDEX IX_PPOrderEntry_Bom ON PPOrderEntry (FBomInterID)
GO

-- ---- layouts ----

CREATE TABLE ICTableFieldInfo (
  FNum             int           NOT NULL,
  FCtlID           varchar(50)   NOT NULL,
  FCtlName         nvarchar(80)  NOT NULL DEFAULT '',
  FCtlName_Cht     nvarchar(80)  NOT NULL DEFAULT '',
  FCtlName_En      nvarchar(80)  NOT NULL DEFAULT '',
  FLdgNum          int           NOT NULL DEFAULT 0,       -- 0 header, 1 lines
  FOrder           int           NOT NULL DEFAULT 0,
  FCaption         nvarchar(80)  NOT NULL DEFAULT '',
  FCaption_Cht     nvarchar(80)  NOT NULL DEFAULT '',
  FCaption_En      nvarchar(80)  NOT NULL DEFAULT '',
  FHeadSecond      nvarchar(80)  NOT NULL DEFAULT '',
  FName            varchar(50)   NOT NULL,
  FAlign           int           NOT NULL DEFAULT 0,
  FVisible         varchar(10)   NOT NULL DEFAULT '1',
  FDecCtl          int           NOT NULL DEFAULT 0,
  FNeedHeadSecond  int           NOT NULL DEFAULT 0,
  PRIMARY KEY (FCtlID, FLdgNum, FNum)
)
GO

CREATE TABLE ICTransactionType (
  FID          int          NOT NULL PRIMARY KEY,
  FName        nvarchar(80) NOT NULL,
  FTemplateID  varchar(10)  NOT NULL
)
GO

CREATE TABLE ICTemplate (
  FID            varchar(10)  NOT NULL,
  FCtlIndex      int          NOT NULL,
  FFieldName     varchar(50)  NOT NULL,
  FCaption       nvarchar(80) NOT NULL DEFAULT '',
  FCaption_CHT   nvarchar(80) NOT NULL DEFAULT '',
  FCaption_EN    nvarchar(80) NOT NULL DEFAULT '',
  FCtlType       int          NOT NULL DEFAULT 0,
  FLookUpCls     int          NOT NULL DEFAULT -1,         -- -1 looks nothing up
  FRelateOutTbl  int          NOT NULL DEFAULT 0,
  FDefaultCtl    int          NOT NULL DEFAULT 1,          -- 0 for a user-defined field
  PRIMARY KEY (FID, FCtlIndex)
)
GO

CREATE TABLE ICTemplateEntry (
  FID              varchar(10)  NOT NULL,
  FCtlOrder        int          NOT NULL,
  FFieldName       varchar(50)  NOT NULL,
  FHeadCaption     nvarchar(80) NOT NULL DEFAULT '',
  FHeadCaption_CHT nvarchar(80) NOT NULL DEFAULT '',
  FHeadCaption_EN  nvarchar(80) NOT NULL DEFAULT '',
  FCtlType         int          NOT NULL DEFAULT 0,
  FLookUpCls       int          NOT NULL DEFAULT -1,
  FRelateOutTbl    int          NOT NULL DEFAULT 0,
  FDefaultCtl      int          NOT NULL DEFAULT 1,
  PRIMARY KEY (FID, FCtlOrder)
)
GO

-- What the user-defined fields of bills hold.
CREATE TABLE ICUserDefinedValue (
  FTranType   int           NOT NULL,                      -- the bill's transaction type
  FInterID    int           NOT NULL,
  FEntryID    int           NOT NULL DEFAULT 0,            -- 0 for the header
  FFieldName  varchar(50)   NOT NULL,
  FID         nvarchar(255) NULL,                          -- the value, or the id of what was looked up
  FName       nvarchar(255) NULL,                          -- what was looked up is called
  PRIMARY KEY (FTranType, FInterID, FEntryID, FFieldName)
)
GO
