SELECT * FROM t_ICItem WHERE FNumber LIKE '0[0-9].%' AND FName NOT LIKE N'%[^a-z]_' ESCAPE '!' OR FShortNumber LIKE '!%' ESCAPE '!'
