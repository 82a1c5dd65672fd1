delete from IcBom where FInterId in (select FCBomInterId from IcEcn where FInterId = 5)

update t1 set FStatus = 1, FCBomInterID = 0, FStarUperID = '', FStarUpDate = NULL from IcEcn t1 where FInterId = 5