SELECT FMaxNum + ?, @text FROM ICMaxNum WITH (UPDLOCK) WHERE FTableName LIKE @text + '%' SET @text = REVERSE(@text)
