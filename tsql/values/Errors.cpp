#include "tsql/values/Errors.h"

#include <algorithm>
#include <iterator>

namespace tsql {
namespace {

struct ErrorText {
  int number;
  int severity;
  int state;
  const char* text;
};

constexpr ErrorText kErrors[] = {
    {kTimeoutExpired, 11, 0, "Timeout expired"},
    {102, 15, 1, "Incorrect syntax near '%1'."},
    {103, 15, 4, "The identifier that starts with '%1' is too long. Maximum length is 128."},
    {104, 15, 1,
     "ORDER BY items must appear in the select list if the statement contains a UNION, INTERSECT or EXCEPT "
     "operator."},
    {105, 15, 1, "Unclosed quotation mark after the character string '%1'."},
    {106, 15, 1, "Too many table names in the query. The maximum allowable is %1."},
    {107, 15, 1, "The column prefix '%1' does not match with a table name or alias name used in the query."},
    {108, 16, 1,
     "The ORDER BY position number %1 is out of range of the number of items in the select list."},
    {109, 15, 1,
     "There are more columns in the INSERT statement than values specified in the VALUES clause. The number "
     "of values in the VALUES clause must match the number of columns specified in the INSERT statement."},
    {110, 15, 1,
     "There are fewer columns in the INSERT statement than values specified in the VALUES clause. The number "
     "of values in the VALUES clause must match the number of columns specified in the INSERT statement."},
    {111, 15, 1, "'%1' must be the first statement in a query batch."},
    {113, 15, 1, "Missing end comment mark '*/'."},
    {116, 16, 1,
     "Only one expression can be specified in the select list when the subquery is not introduced with "
     "EXISTS."},
    {119, 15, 1,
     "Must pass parameter number %1 and subsequent parameters as '@name = value'. After the form '@name = "
     "value' has been used, all subsequent parameters must be passed in the form '@name = value'."},
    {120, 15, 1,
     "The select list for the INSERT statement contains fewer items than the insert list. The number of "
     "SELECT values must match the number of INSERT columns."},
    {121, 15, 1,
     "The select list for the INSERT statement contains more items than the insert list. The number of "
     "SELECT values must match the number of INSERT columns."},
    {127, 15, 1, "A TOP N or FETCH rowcount value may not be negative."},
    {128, 15, 1,
     "The name \"%1\" is not permitted in this context. Valid expressions are constants, constant expressions, and (in "
     "some contexts) variables. Column names are not permitted."},
    {130, 15, 1,
     "Cannot perform an aggregate function on an expression containing an aggregate or a subquery."},
    {131, 15, 3,
     "The size (%1) given to the type '%2' exceeds the maximum allowed for any data type (8000)."},
    {132, 15, 1,
     "The label '%1' has already been declared. Label names must be unique within a query batch or stored "
     "procedure."},
    {133, 15, 1, "A GOTO statement references the label '%1' but the label has not been declared."},
    {134, 15, 2,
     "The variable name '%1' has already been declared. Variable names must be unique within a query batch "
     "or stored procedure."},
    {135, 15, 1, "Cannot use a BREAK statement outside the scope of a WHILE statement."},
    {136, 15, 1, "Cannot use a CONTINUE statement outside the scope of a WHILE statement."},
    {137, 15, 2, "Must declare the scalar variable \"%1\"."},
    {140, 15, 1, "Can only use IF UPDATE within a CREATE TRIGGER statement."},
    {141, 15, 1,
     "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval "
     "operations."},
    {144, 15, 1,
     "Cannot use an aggregate or a subquery in an expression used for the group by list of a GROUP BY clause."},
    {145, 15, 1, "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
    {147, 15, 1,
     "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING "
     "clause or a select list, and the column being aggregated is an outer reference."},
    {148, 15, 1, "Incorrect time syntax in time string '%1' used with WAITFOR."},
    {154, 15, 3, "%1 is not allowed in a procedure, function or trigger."},
    {155, 15, 1, "'%1' is not a recognized %2 option."},
    {156, 15, 1, "Incorrect syntax near the keyword '%1'."},
    {157, 15, 1, "An aggregate may not appear in the set list of an UPDATE statement."},
    {158, 15, 1, "An aggregate may not appear in the OUTPUT clause."},
    {164, 15, 1, "Each GROUP BY expression must contain at least one column that is not an outer reference."},
    {166, 15, 1, "'%1' does not allow specifying the database name as a prefix to the object name."},
    {174, 15, 1, "The %1 function requires %2 argument(s)."},
    {177, 15, 1, "The IDENTITY function can only be used when the SELECT statement has an INTO clause."},
    {178, 15, 1, "A RETURN statement with a return value cannot be used in this context."},
    {180, 15, 1, "There are not enough parameters: the marker %1 of the batch has no value."},
    {189, 15, 1, "The %1 function requires %2 arguments."},
    {191, 15, 1,
     "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller "
     "queries."},
    {195, 15, 10, "'%1' is not a recognized built-in function name."},
    {196, 15, 1,
     "SELECT INTO must be the first query in a statement containing a UNION, INTERSECT or EXCEPT operator."},
    {201, 16, 4, "Procedure or function '%1' expects parameter '%2', which was not supplied."},
    {205, 16, 1,
     "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal number of "
     "expressions in their target lists."},
    {206, 16, 2, "Operand type clash: %1 is incompatible with %2"},
    {207, 16, 1, "Invalid column name '%1'."},
    {208, 16, 1, "Invalid object name '%1'."},
    {209, 16, 1, "Ambiguous column name '%1'."},
    {213, 16, 1, "Column name or number of supplied values does not match table definition."},
    {214, 16, 2, "Procedure expects parameter '%1' of type '%2'."},
    {217, 16, 1, "Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32)."},
    {220, 16, 1, "Arithmetic overflow error for data type %1, value = %2."},
    {232, 16, 3, "Arithmetic overflow error for type %1, value = %2."},
    {234, 16, 2, "There is insufficient result space to convert a money value to %1."},
    {235, 16, 0, "Cannot convert a char value to money. The char value has incorrect syntax."},
    {239, 16, 1, "Duplicate common table expression name '%1' was specified."},
    {240, 16, 1,
     "Types don't match between the anchor and the recursive part in column \"%1\" of recursive query \"%2\"."},
    {241, 16, 1, "Conversion failed when converting date and/or time from character string."},
    {242, 16, 3, "The conversion of a %1 data type to a %2 data type resulted in an out-of-range value."},
    {244, 16, 1, "The conversion of the %1 value '%2' overflowed an %3 column. Use a larger integer column."},
    {245, 16, 1, "Conversion failed when converting the %1 value '%2' to data type %3."},
    {246, 16, 1, "No anchor member was specified for recursive query \"%1\"."},
    {248, 16, 1, "The conversion of the %1 value '%2' overflowed an int column."},
    {252, 16, 1, "Recursive common table expression '%1' does not contain a top-level UNION ALL operator."},
    {253, 16, 1, "Recursive member of a common table expression '%1' has multiple recursive references."},
    {257, 16, 3,
     "Implicit conversion from data type %1 to %2 is not allowed. Use the CONVERT function to run this "
     "query."},
    {259, 16, 1, "Ad hoc updates to system catalogs are not allowed."},
    {264, 16, 1,
     "The column name '%1' is specified more than once in the SET clause or column list of an INSERT. A "
     "column cannot be assigned more than one value in the same clause. Modify the clause to make sure that "
     "a column is updated only once. If this statement updates or inserts columns into a view, column "
     "aliasing can conceal the duplication in your code."},
    {265, 16, 1,
     "The column name \"%1\" specified in the PIVOT operator conflicts with the existing column name in the "
     "PIVOT argument."},
    {270, 16, 1, "Object '%1' cannot be modified."},
    {271, 16, 1,
     "The column \"%1\" cannot be modified because it is either a computed column or is the result of a UNION "
     "operator."},
    {281, 16, 1, "%1 is not a valid style number when converting from %2 to a character string."},
    {286, 16, 1, "The logical tables INSERTED and DELETED cannot be updated."},
    {289, 16, 1, "Cannot construct data type %1, some of the arguments have values which are not valid."},
    {293, 16, 0, "Cannot convert char value to smallmoney. The char value has incorrect syntax."},
    {295, 16, 3, "Conversion failed when converting character string to smalldatetime data type."},
    {310, 15, 1, "The value %1 specified for the MAXRECURSION option exceeds the allowed maximum of 32767."},
    {311, 16, 1, "Cannot use text, ntext, or image columns in the 'inserted' and 'deleted' tables."},
    {313, 16, 3, "An insufficient number of arguments were supplied for the procedure or function %1."},
    {321, 15, 1,
     "\"%1\" is not a recognized table hints option. If it is intended as a parameter to a table-valued "
     "function or to the CHANGETABLE function, ensure that your database compatibility mode is set to 90."},
    {331, 16, 1, "The target table '%1' of the OUTPUT INTO clause cannot have any enabled triggers."},
    {334, 16, 1,
     "The target table '%1' of the DML statement cannot have any enabled triggers if the statement contains "
     "an OUTPUT clause without INTO clause."},
    {343, 15, 1, "Unknown object type '%1' used in a CREATE, DROP, or ALTER statement."},
    {402, 16, 1, "The data types %1 and %2 are incompatible in the %3 operator."},
    {408, 16, 1, "A constant expression was encountered in the ORDER BY list, position %1."},
    {443, 16, 14, "Invalid use of a side-effecting operator '%1' within a function."},
    {444, 16, 2, "Select statements included within a function cannot return data to a client."},
    {446, 16, 9,
     "Cannot resolve collation conflict between \"%1\" and \"%2\" in %3 operator for %4 operation."},
    {447, 16, 0, "Expression type %1 is invalid for COLLATE clause."},
    {448, 16, 1, "Invalid collation '%1'."},
    {451, 16, 1,
     "Cannot resolve collation conflict between \"%1\" and \"%2\" in %3 operator occurring in %4 statement column %5."},
    {455, 16, 2, "The last statement included within a function must be a return statement."},
    {457, 16, 1,
     "Implicit conversion of %1 value to %2 cannot be performed because the collation of the value is unresolved "
     "due to a collation conflict between \"%3\" and \"%4\" in %5 operator."},
    {460, 16, 1,
     "DISTINCT operator is not allowed in the recursive part of a recursive common table expression '%1'."},
    {461, 16, 1,
     "The TOP or OFFSET operator is not allowed in the recursive part of a recursive common table expression "
     "'%1'."},
    {462, 16, 1,
     "Outer join is not allowed in the recursive part of a recursive common table expression '%1'."},
    {465, 16, 1, "Recursive references are not allowed in subqueries."},
    {467, 16, 1,
     "GROUP BY, HAVING, or aggregate functions are not allowed in the recursive part of a recursive common "
     "table expression '%1'."},
    {468, 16, 9, "Cannot resolve the collation conflict between \"%1\" and \"%2\" in the %3 operation."},
    {483, 16, 1, "The OUTPUT clause cannot be used in an INSERT...EXEC statement."},
    {506, 16, 1, "The invalid escape character \"%1\" was specified in a LIKE predicate."},
    {512, 16, 1,
     "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , "
     ">, >= or when the subquery is used as an expression."},
    {515, 16, 2,
     "Cannot insert the value NULL into column '%1', table '%2'; column does not allow nulls. %3 fails."},
    {517, 16, 1, "Adding a value to a '%1' column caused an overflow."},
    {529, 16, 2, "Explicit conversion from data type %1 to %2 is not allowed."},
    {530, 16, 1,
     "The statement terminated. The maximum recursion %1 has been exhausted before statement completion."},
    {535, 16, 0,
     "The datediff function resulted in an overflow. The number of dateparts separating two date/time "
     "instances is too large. Try to use datediff with a less precise datepart."},
    {536, 16, 1, "Invalid length parameter passed to the %1 function."},
    {537, 16, 2, "Invalid length parameter passed to the LEFT or SUBSTRING function."},
    {544, 16, 1,
     "Cannot insert explicit value for identity column in table '%1' when IDENTITY_INSERT is set to OFF."},
    {545, 16, 1,
     "Explicit value must be specified for identity column in table '%1' either when IDENTITY_INSERT is set "
     "to ON or when a replication user is inserting into a NOT FOR REPLICATION identity column."},
    {547, 16, 0,
     "The %1 statement conflicted with the %2 constraint \"%3\". The conflict occurred in database \"%4\", "
     "table \"%5\"%6."},
    {557, 16, 2,
     "Only functions and some extended stored procedures can be executed from within a function."},
    {628, 16, 0, "Cannot issue SAVE TRANSACTION when there is no active transaction."},
    {911, 16, 1, "Database '%1' does not exist. Make sure that the name is entered correctly."},
    {948, 20, 1,
     "The database '%1' cannot be opened because it is version %2. This server supports version %3 and "
     "earlier. A downgrade path is not supported."},
    {1001, 15, 1, "Line %1: Length or precision specification %2 is invalid."},
    {1002, 15, 1, "Line %1: Specified scale %2 is invalid."},
    {1008, 16, 1,
     "The SELECT item identified by the ORDER BY number %1 contains a variable as part of the expression "
     "identifying a column position. Variables are only allowed when ordering by an expression referencing a "
     "column name."},
    {1011, 16, 1, "The correlation name '%1' is specified multiple times in a FROM clause."},
    {1013, 16, 1,
     "The objects \"%1\" and \"%2\" in the FROM clause have the same exposed names. Use correlation names to "
     "distinguish them."},
    {1014, 15, 1, "A TOP or FETCH clause contains an invalid value."},
    {1023, 15, 1, "Invalid parameter %1 specified for %2."},
    {1031, 15, 1, "Percent values must be between 0 and 100."},
    {1026, 15, 1, "GOTO cannot be used to jump into a TRY or CATCH scope."},
    {1033, 15, 1,
     "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common "
     "table expressions, unless TOP or FOR XML is also specified."},
    {1034, 15, 1, "Syntax error: Duplicate specification of the action \"%1\" in the trigger declaration."},
    {1038, 15, 5,
     "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name. For "
     "other statements, look for empty alias names. Aliases defined as \"\" or [] are not allowed. Change the alias "
     "to a valid name."},
    {1046, 15, 1, "Subqueries are not allowed in this context. Only scalar expressions are allowed."},
    {1048, 15, 1, "Conflicting cursor options %1 and %2."},
    {1054, 15, 1, "Syntax '%1' is not allowed in schema-bound objects."},
    {1056, 15, 1,
     "The number of elements in the select list exceeds the maximum allowed number of 4096 elements."},
    {1060, 15, 1,
     "The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer."},
    {1062, 15, 1, "The TOP N WITH TIES clause is not allowed without a corresponding ORDER BY clause."},
    {1087, 15, 2, "Must declare the table variable \"%1\"."},
    {1088, 16, 11, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {1222, 16, 51, "Lock request time out period exceeded."},
    {1505, 16, 1,
     "The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name "
     "'%1' and the index name '%2'."},
    {1750, 16, 0, "Could not create constraint or index. See previous errors."},
    {1711, 16, 1,
     "Cannot define PRIMARY KEY constraint on column '%1' in table '%2'. The computed column has to be persisted "
     "and not nullable."},
    {1715, 16, 1,
     "Foreign key '%1' creation failed. Only NO ACTION referential update action is allowed for referencing "
     "computed column '%2'."},
    {1752, 16, 0, "Column '%1' in table '%2' is invalid for creating a default constraint."},
    {1754, 16, 0,
     "Defaults cannot be created on columns with an IDENTITY attribute. Table '%1', column '%2'."},
    {1757, 16, 0,
     "Column '%1.%2' is not of same collation as referencing column '%3.%4' in foreign key '%5'."},
    {1759, 16, 0,
     "Computed column '%1' in table '%2' is not allowed to be used in another computed-column definition."},
    {1761, 16, 0,
     "Cannot create the foreign key \"%1\" with the SET NULL referential action, because one or more referencing "
     "columns are not nullable."},
    {1762, 16, 0,
     "Cannot create the foreign key \"%1\" with the SET DEFAULT referential action, because one or more "
     "referencing not-nullable columns lack a default constraint."},
    {1764, 16, 1,
     "Computed Column '%1' in table '%2' is invalid for use in '%3' because it is not persisted."},
    {1765, 16, 1,
     "Foreign key '%1' creation failed. Only NO ACTION and CASCADE referential delete actions are allowed for "
     "referencing computed column '%2'."},
    {1767, 16, 1, "Foreign key '%1' references invalid table '%2'."},
    {1769, 16, 1, "Foreign key '%1' references invalid column '%2' in referencing table '%3'."},
    {1770, 16, 1, "Foreign key '%1' references invalid column '%2' in referenced table '%3'."},
    {1773, 16, 1,
     "Foreign key '%1' has implicit reference to object '%2' which does not have a primary key defined on "
     "it."},
    {1776, 16, 0,
     "There are no primary or candidate keys in the referenced table '%1' that match the referencing column "
     "list "
     "in the foreign key '%2'."},
    {1778, 16, 0,
     "Column '%1.%2' is not the same data type as referencing column '%3.%4' in foreign key '%5'."},
    {1779, 16, 0, "Table '%1' already has a primary key defined on it."},
    {1781, 16, 1, "Column already has a DEFAULT bound to it."},
    {1785, 16, 0,
     "Introducing FOREIGN KEY constraint '%1' on table '%2' may cause cycles or multiple cascade paths. Specify ON "
     "DELETE NO ACTION or ON UPDATE NO ACTION, or modify other FOREIGN KEY constraints."},
    {1787, 16, 0,
     "Cannot define foreign key constraint '%1' with cascaded DELETE or UPDATE on table '%2' because the table has "
     "an INSTEAD OF DELETE or UPDATE TRIGGER defined on it."},
    {1788, 16, 0,
     "Cascading foreign key '%1' cannot be created where the referencing column '%2.%3' is an identity column."},
    {1911, 16, 1, "Column name '%1' does not exist in the target table or view."},
    {1913, 16, 1,
     "The operation failed because an index or statistics with name '%1' already exists on table '%2'."},
    {2010, 16, 1, "Cannot perform alter on '%1' because it is an incompatible object type."},
    {2103, 16, 1,
     "Cannot %1 trigger '%2' because its schema is different from the schema of the target table or view."},
    {2110, 16, 1, "Cannot alter trigger '%1' on '%2' because this trigger does not belong to this object."},
    {2111, 16, 1,
     "Cannot %1 trigger '%2' on %3 '%4' because an INSTEAD OF %5 trigger already exists on this object."},
    {2113, 16, 1,
     "Cannot %1 INSTEAD OF DELETE or INSTEAD OF UPDATE TRIGGER '%2' on table '%3'. This is because the table has a "
     "FOREIGN KEY with cascading DELETE or UPDATE."},
    {2501, 16, 45, "Cannot find a table or object with the name \"%1\". Check the system catalog."},
    {2528, 0, 1,
     "DBCC execution completed. If DBCC printed error messages, contact your system administrator."},
    {2560, 16, 9, "Parameter %1 is incorrect for this DBCC statement."},
    {2601, 14, 1, "Cannot insert duplicate key row in object '%1' with unique index '%2'."},
    {2627, 14, 1, "Violation of %1 constraint '%2'. Cannot insert duplicate key in object '%3'."},
    {2706, 16, 6, "Table '%1' does not exist."},
    {2767, 16, 1, "Could not locate statistics '%1' in the system catalogs."},
    {2705, 16, 3,
     "Column names in each table must be unique. Column name '%1' in table '%2' is specified more than "
     "once."},
    {2714, 16, 6, "There is already an object named '%1' in the database."},
    {2715, 16, 6, "Column, parameter, or variable #%1: Cannot find data type %2."},
    {2716, 16, 1, "Column, parameter, or variable #%1: Cannot specify a column width on data type %2."},
    {2717, 15, 2, "The size (%1) given to the type '%2' exceeds the maximum allowed (4000)."},
    {2729, 16, 1,
     "Column '%1' in table '%2' cannot be used in an index or statistics or as a partition key because it is "
     "non-deterministic."},
    {2739, 16, 1, "The text, ntext, and image data types are invalid for local variables."},
    {2744, 16, 2,
     "Multiple identity columns specified for table '%1'. Only one identity column per table is "
     "allowed."},
    {2732, 16, 1,
     "Error number %1 is invalid. The number must be from 13000 through 2147483647 and it cannot be 50000."},
    {2742, 16, 1, "SET DATEFIRST %1 is out of range."},
    {2747, 16, 1,
     "Too many substitution parameters for RAISERROR. Cannot exceed 20 substitution parameters."},
    {2748, 16, 1, "Cannot specify %1 data type (parameter %2) as a substitution parameter."},
    {2749, 16, 2,
     "Identity column '%1' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a "
     "scale of 0, and constrained to be nonnullable."},
    {2750, 16, 1,
     "Column, parameter, or variable #%1: Specified column precision %2 is greater than the maximum precision "
     "of %3."},
    {2751, 16, 1,
     "Column, parameter, or variable #%1: Specified column scale %2 is greater than the specified precision "
     "of %3."},
    {2752, 16, 1, "Identity column '%1' contains invalid SEED."},
    {2753, 16, 1, "Identity column '%1' contains invalid INCREMENT."},
    {2772, 16, 1, "Cannot access temporary tables from within a function."},
    {2754, 16, 1,
     "Error severity levels greater than 18 can only be specified by members of the sysadmin role, using the "
     "WITH LOG option."},
    {2786, 16, 1,
     "The data type of substitution parameter %1 does not match the expected type of the format "
     "specification."},
    {2787, 16, 1, "Invalid format specification: '%1'."},
    {2759, 16, 0, "CREATE SCHEMA failed due to previous errors."},
    {2760, 16, 1,
     "The specified schema name \"%1\" either does not exist or you do not have permission to use it."},
    {2812, 16, 62, "Could not find stored procedure '%1'."},
    {3609, 16, 1, "The transaction ended in the trigger. The batch has been aborted."},
    {3616, 16, 1,
     "An error was raised during trigger execution. The batch has been aborted and the user transaction, if "
     "any, has been rolled back."},
    {3623, 16, 1, "An invalid floating point operation occurred."},
    {3701, 11, 5, "Cannot drop the %1 '%2', because it does not exist or you do not have permission."},
    {3725, 16, 0, "The constraint '%1' is being referenced by table '%2', foreign key constraint '%3'."},
    {3729, 16, 1, "Cannot %1 '%2' because it is being referenced by object '%3'."},
    {3727, 16, 0, "Could not drop constraint. See previous errors."},
    {3728, 16, 1, "'%1' is not a constraint."},
    {3733, 16, 2, "Constraint '%1' does not belong to table '%2'."},
    {3726, 16, 1, "Could not drop object '%1' because it is referenced by a FOREIGN KEY constraint."},
    {3902, 16, 1, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3903, 16, 1, "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3915, 16, 0, "Cannot use the ROLLBACK statement within an INSERT-EXEC statement."},
    {3930, 16, 1,
     "The current transaction cannot be committed and cannot support operations that write to the log file. Roll "
     "back the transaction."},
    {3931, 16, 1,
     "The current transaction cannot be committed and cannot be rolled back to a savepoint. Roll back the "
     "entire transaction."},
    {3998, 16, 1,
     "Uncommittable transaction is detected at the end of the batch. The transaction is rolled back."},
    {4060, 11, 1, "Cannot open database \"%1\" requested by the login. The login failed."},
    {4104, 16, 1, "The multi-part identifier \"%1\" could not be bound."},
    {4108, 15, 1, "Windowed functions can only appear in the SELECT or ORDER BY clauses."},
    {4109, 15, 1,
     "Windowed functions cannot be used in the context of another windowed function or aggregate."},
    {4112, 15, 1, "The function '%1' must have an OVER clause with ORDER BY."},
    {4113, 15, 1,
     "The function '%1' is not a valid windowing function, and cannot be used with the OVER clause."},
    {4115, 15, 1,
     "The reference to column \"%1\" is not allowed in an argument to a TOP, OFFSET, or FETCH clause. Only "
     "references to columns at an outer scope or standalone expressions and subqueries are allowed here."},
    {4116, 16, 1, "The function 'ntile' takes only a positive int or bigint expression as its input."},
    {4121, 16, 1,
     "Cannot find either column \"%1\" or the user-defined function or aggregate \"%2\", or the name is "
     "ambiguous."},
    {4127, 16, 1,
     "At least one of the arguments to COALESCE must be an expression that is not the NULL constant."},
    {4145, 15, 1,
     "An expression of non-boolean type specified in a context where a condition is expected, near '%1'."},
    {4151, 16, 1,
     "The type of the first argument to NULLIF cannot be the NULL constant because the type of the first argument "
     "has to be known."},
    {4193, 16, 1, "'BETWEEN %1 AND %2' is not a valid window frame and cannot be used with the OVER clause."},
    {4194, 16, 1, "RANGE is only supported with UNBOUNDED and CURRENT ROW window frame delimiters."},
    {4403, 16, 1,
     "Cannot update the view or function '%1' because it contains aggregates, or a DISTINCT or GROUP BY clause, "
     "or PIVOT or UNPIVOT operator."},
    {4405, 16, 1,
     "View or function '%1' is not updatable because the modification affects multiple base tables."},
    {4406, 16, 1,
     "Update or insert of view or function '%1' failed because it contains a derived or constant field."},
    {4426, 16, 1, "View '%1' is not updatable because the definition contains a UNION operator."},
    {4506, 16, 1,
     "Column names in each view or function must be unique. Column name '%1' in view or function '%2' is "
     "specified more than once."},
    {4508, 16, 1,
     "Views or functions are not allowed on temporary tables. Table names that begin with '#' denote "
     "temporary tables."},
    {4511, 16, 1, "Create View or Function failed because no column name was specified for column %1."},
    {4512, 16, 3,
     "Cannot schema bind %1 '%2' because name '%3' is invalid for schema binding. Names must be in two-part "
     "format and an object cannot reference itself."},
    {4513, 16, 2, "Cannot schema bind %1 '%2'. '%3' is not schema bound."},
    {4514, 16, 1, "CREATE FUNCTION failed because a column name is not specified for column %1."},
    {4701, 16, 1, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {4712, 16, 1, "Cannot truncate table '%1' because it is being referenced by a FOREIGN KEY constraint."},
    {4901, 16, 1,
     "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition "
     "specified, or the column being added is an identity or timestamp column, or alternatively if none of "
     "the previous conditions are satisfied the table must be empty to allow addition of this column. Column "
     "'%1' cannot be added to non-empty table '%2' because it does not satisfy these conditions."},
    {4902, 16, 1, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {4909, 16, 1, "Cannot alter '%1' because it is not a table."},
    {4920, 16, 0, "ALTER TABLE failed because trigger '%1' on table '%2' does not exist."},
    {4916, 16, 0, "Could not enable or disable the constraint. See previous errors."},
    {4917, 16, 0, "Constraint '%1' does not exist."},
    {4922, 16, 9, "ALTER TABLE %1 COLUMN %2 failed because one or more objects access this column."},
    {4923, 16, 1,
     "ALTER TABLE DROP COLUMN failed because '%1' is the only data column in table '%2'. A table must have at "
     "least one data column."},
    {4924, 16, 1, "ALTER TABLE %1 COLUMN failed because column '%2' does not exist in table '%3'."},
    {4927, 16, 1, "Cannot alter column '%1' to be data type %2."},
    {4928, 16, 1, "Cannot alter column '%1' because it is '%2'."},
    {4936, 16, 1,
     "Computed column '%1' in table '%2' cannot be persisted because the column is non-deterministic."},
    {5074, 16, 1, "The %1 '%2' is dependent on column '%3'."},
    {5308, 16, 1,
     "Windowed functions, aggregates and NEXT VALUE FOR functions do not support integer indices as ORDER BY "
     "clause expressions."},
    {5309, 16, 1,
     "Windowed functions, aggregates and NEXT VALUE FOR functions do not support constants as ORDER BY "
     "clause expressions."},
    {5324, 15, 1,
     "In a MERGE statement, a '%1' clause with a search condition cannot appear after a '%1' clause with no "
     "search condition."},
    {5703, 0, 1, "Changed language setting to %1."},
    {6401, 16, 1, "Cannot roll back %1. No transaction or savepoint of that name was found."},
    {7995, 0, 1, "Checking identity information: current identity value '%1'."},
    {7997, 16, 1, "'%1' does not contain an identity column."},
    {7998, 0, 1, "Checking identity information: current identity value '%1', current column value '%2'."},
    {8101, 16, 1,
     "An explicit value for the identity column in table '%1' can only be specified when a column list is "
     "used and IDENTITY_INSERT is ON."},
    {8102, 16, 1, "Cannot update identity column '%1'."},
    {8106, 16, 1, "Table '%1' does not have the identity property. Cannot perform SET operation."},
    {8107, 16, 1,
     "IDENTITY_INSERT is already ON for table '%1'. Cannot perform SET operation for table '%2'."},
    {8108, 16, 1,
     "Cannot add identity column, using the SELECT INTO statement, to table '%1', which already has column '%2' "
     "that inherits the identity property."},
    {8110, 16, 0, "Cannot add multiple PRIMARY KEY constraints to table '%1'."},
    {8111, 16, 1, "Cannot define PRIMARY KEY constraint on nullable column in table '%1'."},
    {8114, 16, 5, "Error converting data type %1 to %2."},
    {8115, 16, 2, "Arithmetic overflow error converting %1 to data type %2."},
    {8116, 16, 1, "Argument data type %1 is invalid for argument %2 of %3 function."},
    {8117, 16, 1, "Operand data type %1 is invalid for %2 operator."},
    {8120, 16, 1,
     "Column '%1' is invalid in the select list because it is not contained in either an aggregate function "
     "or the GROUP BY clause."},
    {8121, 16, 1,
     "Column '%1' is invalid in the HAVING clause because it is not contained in either an aggregate "
     "function or the GROUP BY clause."},
    {8124, 16, 1,
     "Multiple columns are specified in an aggregated expression containing an outer reference. If an "
     "expression being aggregated contains an outer reference, then that outer reference must be the only "
     "column referenced in the expression."},
    {8127, 16, 1,
     "Column \"%1\" is invalid in the ORDER BY clause because it is not contained in either an aggregate "
     "function or the GROUP BY clause."},
    {8133, 16, 1,
     "At least one of the result expressions in a CASE specification must be an expression other than the NULL "
     "constant."},
    {8134, 16, 1, "Divide by zero error encountered."},
    {8144, 16, 2, "Procedure or function %1 has too many arguments specified."},
    {8145, 16, 1, "%1 is not a parameter for procedure %2."},
    {8147, 16, 1, "Could not create IDENTITY attribute on nullable column '%1', table '%2'."},
    {8152, 16, 14, "String or binary data would be truncated."},
    {8155, 16, 2, "No column name was specified for column %1 of '%2'."},
    {8156, 16, 1, "The column '%1' was specified multiple times for '%2'."},
    {8158, 16, 1, "'%1' has more columns than were specified in the column list."},
    {8159, 16, 1, "'%1' has fewer columns than were specified in the column list."},
    {8161, 16, 1,
     "Argument %1 of the %2 function does not match any of the expressions in the GROUP BY clause."},
    {8164, 16, 1, "An INSERT EXEC statement cannot be nested."},
    {8167, 16, 1,
     "The type of column \"%1\" conflicts with the type of other columns specified in the UNPIVOT list."},
    {8169, 16, 2, "Conversion failed when converting from a character string to uniqueidentifier."},
    {8170, 16, 2, "Insufficient result space to convert uniqueidentifier value to char."},
    {8178, 16, 1, "The parameterized query '(%1)%2' expects the parameter '%3', which was not supplied."},
    {8197, 16, 4, "The object '%1' does not exist or is invalid for this operation."},
    {8183, 16, 1,
     "Only UNIQUE or PRIMARY KEY constraints can be created on computed columns, while CHECK, FOREIGN KEY, and "
     "NOT NULL constraints require that computed columns be persisted."},
    {8649, 17, 1, "The query has been canceled because it takes more work than the session allows."},
    {8672, 16, 1,
     "The MERGE statement attempted to UPDATE or DELETE the same row more than once. This happens when a "
     "target row matches more than one source row. A MERGE statement cannot UPDATE/DELETE the same row of the "
     "target table multiple times. Refine the ON clause to ensure a target row matches at most one source "
     "row, or use the GROUP BY clause to group the source rows."},
    {8730, 16, 1, "Offset parameter for Lag and Lead functions cannot be a negative value."},
    {8733, 16, 1, "Separator parameter for STRING_AGG must be a string literal or variable."},
    {9806, 16, 1, "The datepart %1 is not supported by date function %2."},
    {9809, 16, 1, "The style %1 is not supported for conversions from %2 to %3."},
    {9810, 16, 1, "The datepart %1 is not supported by date function %2 for data type %3."},
    {9828, 16, 1,
     "The second and third arguments of the TRANSLATE built-in function must contain an equal number of "
     "characters."},
    {9829, 16, 1,
     "STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result truncation."},
    {10702, 15, 1,
     "The WITH CUBE and WITH ROLLUP options are not permitted with a ROLLUP, CUBE, or GROUPING SETS "
     "specification."},
    {10703, 15, 1, "Too many grouping sets. The maximum number is %1."},
    {10704, 15, 1,
     "To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW statement "
     "inside a CATCH block, or add error parameters to the THROW statement."},
    {10705, 16, 1, "Subqueries are not allowed in the OUTPUT clause."},
    {10706, 15, 1,
     "Too many expressions are specified in the GROUP BY clause. The maximum number is %1 when grouping sets "
     "are supplied."},
    {10709, 16, 1, "The number of columns for each row in a table value constructor must be the same."},
    {10711, 15, 1, "An action of type '%1' is not allowed in the '%2' clause of a MERGE statement."},
    {10713, 15, 1, "A MERGE statement must be terminated by a semi-colon (;)."},
    {10714, 15, 1,
     "An action of type '%1' cannot appear more than once in a '%2' clause of a MERGE statement."},
    {10734, 15, 1,
     "Variable assignment is not allowed in a statement containing a top level UNION, INTERSECT or EXCEPT "
     "operator."},
    {10738, 15, 1,
     "The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 "
     "row values."},
    {10741, 15, 2, "A TOP can not be used in the same query or sub-query as a OFFSET."},
    {10742, 15, 1, "The offset specified in a OFFSET clause may not be negative."},
    {10743, 15, 1, "The number of rows provided for a OFFSET clause must be an integer."},
    {10744, 15, 1, "The number of rows provided for a FETCH clause must be greater then zero."},
    {10745, 15, 1, "The number of rows provided for a FETCH clause must be an integer."},
    {10752, 15, 1, "The function '%1' may not have a window frame."},
    {10753, 15, 1, "The function '%1' must have an OVER clause."},
    {10756, 15, 1, "Window frame with ROWS or RANGE must have an ORDER BY clause."},
    {10757, 15, 1, "The function '%1' may not have a WITHIN GROUP clause."},
    {10759, 15, 1, "Use of DISTINCT is not allowed with the OVER clause."},
    {10760, 15, 1,
     "Scale argument is not valid. Valid expressions for data type %1 scale argument are integer constants and "
     "integer constant expressions."},
    {11415, 16, 1,
     "Object '%1' cannot be disabled or enabled. This action applies only to foreign key and check constraints."},
    {15004, 16, 1, "Name cannot be NULL."},
    {15009, 16, 1, "The object '%1' does not exist in database '%2' or is invalid for this operation."},
    {15150, 16, 1, "Cannot %1 the %2 '%3'."},
    {15151, 16, 1, "Cannot %1 the %2 '%3', because it does not exist or you do not have permission."},
    {15197, 16, 1, "There is no text for object '%1'."},
    {15223, 11, 1, "Error: The input parameter '%1' is not allowed to be null."},
    {15225, 11, 1,
     "No item by the name of '%1' could be found in the current database '%2', given that @itemtype was input "
     "as '%3'."},
    {15248, 11, 1, "Either the parameter @objname is ambiguous or the claimed @objtype (%1) is wrong."},
    {15249, 11, 1, "Error: Explicit @objtype '%1' is unrecognized."},
    {15253, 11, 1, "Syntax error parsing SQL identifier '%1'."},
    {15335, 11, 1,
     "Error: The new name '%1' is already in use as a %2 name and would cause a duplicate that is not "
     "permitted."},
    {15336, 16, 1, "Object '%1' cannot be renamed because the object participates in enforced dependencies."},
    {15347, 16, 1, "Cannot transfer an object that is owned by a parent object."},
    {15477, 10, 1, "Caution: Changing any part of an object name could break scripts and stored procedures."},
    {15530, 16, 1, "The object with name \"%1\" already exists."},
    {16905, 16, 1, "The cursor is already open."},
    {16911, 16, 1, "fetch: The fetch type %1 cannot be used with forward only cursors."},
    {16915, 16, 1, "A cursor with the name '%1' already exists."},
    {16916, 16, 1, "A cursor with the name '%1' does not exist."},
    {16917, 16, 1, "Cursor is not open."},
    {16922, 16, 1, "Cursor Fetch: Implicit conversion from data type %1 to %2 is not allowed."},
    {16924, 16, 1,
     "Cursorfetch: The number of variables declared in the INTO list must match that of selected columns."},
    {16925, 16, 1, "The fetch type %1 cannot be used with dynamic cursors."},
    {16929, 16, 1, "The cursor is READ ONLY."},
    {16931, 16, 1, "There are no rows in the current fetch buffer."},
    {16933, 16, 1,
     "The cursor does not include the table being modified or the table is not updatable through the cursor."},
    {16947, 16, 1, "No rows were updated or deleted."},
    {16950, 16, 1, "The variable '%1' does not currently have a cursor allocated to it."},
    {18054, 16, 1,
     "Error %1, severity %2, state %3 was raised, but no message with that error number was found in sys.messages. If "
     "error is larger than 50000, make sure the user-defined message is added using sp_addmessage."},
    {35100, 16, 10,
     "Error number %1 in the THROW statement is outside the valid range. Specify an error number in the valid "
     "range of 50000 to 2147483647."},
    {kUnsupportedError, 16, 1, "%1 is not supported."},
};

const ErrorText& Find(int number) {
  const auto* found = std::find_if(std::begin(kErrors), std::end(kErrors),
                                   [number](const ErrorText& entry) { return entry.number == number; });
  return found != std::end(kErrors) ? *found : kErrors[std::size(kErrors) - 1];
}

std::string Format(const char* text, std::initializer_list<std::string_view> arguments) {
  std::string result;
  for (const char* at = text; *at != '\0'; ++at) {
    if (*at == '%' && at[1] >= '1' && at[1] <= '9') {
      const auto index = static_cast<size_t>(at[1] - '1');
      if (index < arguments.size()) result += *(arguments.begin() + index);
      ++at;
    } else {
      result += *at;
    }
  }
  return result;
}

} // namespace

Error MakeError(int number, int line, std::initializer_list<std::string_view> arguments) {
  const ErrorText& entry = Find(number);
  return {entry.number, entry.severity, entry.state, line, Format(entry.text, arguments)};
}

void Fail(int number, std::initializer_list<std::string_view> arguments, int line) {
  throw MakeError(number, line, arguments);
}

bool EndsTransaction(const Error& error) {
  // After a value that cannot be converted, or a trigger that ended the transaction, the server ends the
  // batch and what is left of the transaction.
  switch (error.number) {
  case 235:
  case 241:
  case 242:
  case 244:
  case 245:
  case 248:
  case 293:
  case 3609:
  case 3616:
  case 8114:
  case 8169: return true;
  default: return error.severity >= 20;
  }
}

bool EndsBatch(const Error& error) {
  if (EndsTransaction(error)) return true;
  switch (error.number) {
  // A statement that compiles and fails while it runs ends alone.
  case 201:
  case 214:
  case 217:
  case 220:
  case 232:
  case 234:
  case 289:
  case 506:
  case 512:
  case 515:
  case 517:
  case 530:
  case 535:
  case 536:
  case 537:
  case 544:
  case 545:
  case 547:
  case 628:
  case 1222:
  case 1505:
  case 1750:
  case 1913:
  case 2501:
  case 2560:
  case 2601:
  case 2627:
  case 2747:
  case 2748:
  case 2754:
  case 2786:
  case 2787:
  case 2812:
  case 3623:
  case 4116:
  case 3701:
  case 3726:
  case 3729:
  case 3902:
  case 3903:
  case 4712:
  case 6401:
  case 7997:
  case 8115:
  case 8134:
  case 8144:
  case 8145:
  case 8152:
  case 8170:
  case 8178:
  case 8730:
  case 9828:
  case 10742:
  case 10743:
  case 10744:
  case 10745:
  case 15004:
  case 15009:
  case 15150:
  case 15151:
  case 15197:
  case 15223:
  case 15225:
  case 15248:
  case 15249:
  case 15253:
  case 15335:
  case 15336:
  case 15347:
  case 15530:
  case 16905:
  case 16911:
  case 16915:
  case 16916:
  case 16917:
  case 16922:
  case 16924:
  case 16925:
  case 16929:
  case 16931:
  case 16933:
  case 16947:
  case 16950: return false;
  default: return error.number < 50000;
  }
}

} // namespace tsql
