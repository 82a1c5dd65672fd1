--检查变更后ECN表体是否物料全部被删除，物料全部被删除的操作不能被容许 
 select (select count(*) as FECNCount  from icecnentry t1 join icecn t2 on t2.FInterID = t1.FInterID
 Where  t1.fchangetype=11023 and ( select count(*) from icecnentry where FInterID = t2.FInterID and FChangeType=11021)=0 
 and t2.finterid=6)-(select count(*) as fbomcount  from icbomchild t1  join icecn t2 on t1.finterid=t2.fbominterid   where t2.finterid=6)