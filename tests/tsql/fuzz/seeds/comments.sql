/* a /* nested */ b */ SELECT 1 -- rest
;;; SELECT 'it''s', "quoted" FROM (SELECT 1 AS "quoted") [a b]
