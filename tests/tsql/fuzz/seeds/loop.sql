DECLARE @i INT = 0, @s NVARCHAR(50) SET @s = '' WHILE 1 = 1 BEGIN SET @i += 1 IF @i % 2 = 0 CONTINUE SET @s = @s + CHAR(64 + @i) + ',' IF @i > 9 BREAK END PRINT @s SELECT @@ROWCOUNT, LEN(@s)
