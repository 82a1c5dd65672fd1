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
    {130, 15, 1,
     "Cannot perform an aggregate function on an expression containing an aggregate or a subquery."},
    {131, 15, 3,
     "The size (%1) given to the type '%2' exceeds the maximum allowed for any data type (8000)."},
    {134, 15, 2,
     "The variable name '%1' has already been declared. Variable names must be unique within a query batch "
     "or stored procedure."},
    {135, 15, 1, "Cannot use a BREAK statement outside the scope of a WHILE statement."},
    {136, 15, 1, "Cannot use a CONTINUE statement outside the scope of a WHILE statement."},
    {137, 15, 2, "Must declare the scalar variable \"%1\"."},
    {141, 15, 1,
     "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval "
     "operations."},
    {144, 15, 1,
     "Cannot use an aggregate or a subquery in an expression used for the group by list of a GROUP BY clause."},
    {145, 15, 1, "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
    {147, 15, 1,
     "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING "
     "clause or a select list, and the column being aggregated is an outer reference."},
    {155, 15, 1, "'%1' is not a recognized %2 option."},
    {156, 15, 1, "Incorrect syntax near the keyword '%1'."},
    {157, 15, 1, "An aggregate may not appear in the set list of an UPDATE statement."},
    {164, 15, 1, "Each GROUP BY expression must contain at least one column that is not an outer reference."},
    {174, 15, 1, "The %1 function requires %2 argument(s)."},
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
    {217, 16, 1, "Maximum stored procedure, function, trigger, or view nesting level exceeded (limit 32)."},
    {220, 16, 1, "Arithmetic overflow error for data type %1, value = %2."},
    {232, 16, 3, "Arithmetic overflow error for type %1, value = %2."},
    {234, 16, 2, "There is insufficient result space to convert a money value to %1."},
    {235, 16, 0, "Cannot convert a char value to money. The char value has incorrect syntax."},
    {239, 16, 1, "Duplicate common table expression name '%1' was specified."},
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
    {264, 16, 1,
     "The column name '%1' is specified more than once in the SET clause or column list of an INSERT. A "
     "column cannot be assigned more than one value in the same clause. Modify the clause to make sure that "
     "a column is updated only once. If this statement updates or inserts columns into a view, column "
     "aliasing can conceal the duplication in your code."},
    {270, 16, 1, "Object '%1' cannot be modified."},
    {281, 16, 1, "%1 is not a valid style number when converting from %2 to a character string."},
    {293, 16, 0, "Cannot convert char value to smallmoney. The char value has incorrect syntax."},
    {321, 15, 1,
     "\"%1\" is not a recognized table hints option. If it is intended as a parameter to a table-valued "
     "function or to the CHANGETABLE function, ensure that your database compatibility mode is set to 90."},
    {343, 15, 1, "Unknown object type '%1' used in a CREATE, DROP, or ALTER statement."},
    {402, 16, 1, "The data types %1 and %2 are incompatible in the %3 operator."},
    {408, 16, 1, "A constant expression was encountered in the ORDER BY list, position %1."},
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
    {506, 16, 1, "The invalid escape character \"%1\" was specified in a LIKE predicate."},
    {512, 16, 1,
     "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , "
     ">, >= or when the subquery is used as an expression."},
    {515, 16, 2,
     "Cannot insert the value NULL into column '%1', table '%2'; column does not allow nulls. %3 fails."},
    {517, 16, 1, "Adding a value to a '%1' column caused an overflow."},
    {529, 16, 2, "Explicit conversion from data type %1 to %2 is not allowed."},
    {530, 16, 1,
     "The statement terminated. The maximum recursion 100 has been exhausted before statement completion."},
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
     "table \"dbo.%5\"%6."},
    {911, 16, 1, "Database '%1' does not exist. Make sure that the name is entered correctly."},
    {948, 20, 1,
     "The database '%1' cannot be opened because it is version %2. This server supports version %3 and "
     "earlier. A downgrade path is not supported."},
    {1001, 15, 1, "Line %1: Length or precision specification %2 is invalid."},
    {1008, 16, 1,
     "The SELECT item identified by the ORDER BY number %1 contains a variable as part of the expression "
     "identifying a column position. Variables are only allowed when ordering by an expression referencing a "
     "column name."},
    {1011, 16, 1, "The correlation name '%1' is specified multiple times in a FROM clause."},
    {1013, 16, 1,
     "The objects \"%1\" and \"%2\" in the FROM clause have the same exposed names. Use correlation names to "
     "distinguish them."},
    {1023, 15, 1, "Invalid parameter %1 specified for %2."},
    {1033, 15, 1,
     "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common "
     "table expressions, unless TOP or FOR XML is also specified."},
    {1038, 15, 5,
     "An object or column name is missing or empty. For SELECT INTO statements, verify each column has a name. For "
     "other statements, look for empty alias names. Aliases defined as \"\" or [] are not allowed. Change the alias "
     "to a valid name."},
    {1046, 15, 1, "Subqueries are not allowed in this context. Only scalar expressions are allowed."},
    {1060, 15, 1,
     "The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer."},
    {1088, 16, 11, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {1222, 16, 51, "Lock request time out period exceeded."},
    {1505, 16, 1,
     "The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name "
     "'dbo.%1' and the index name '%2'."},
    {1750, 16, 0, "Could not create constraint. See previous errors."},
    {1754, 16, 0,
     "Defaults cannot be created on columns with an IDENTITY attribute. Table '%1', column '%2'."},
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
    {1911, 16, 1, "Column name '%1' does not exist in the target table or view."},
    {1913, 16, 1,
     "The operation failed because an index or statistics with name '%1' already exists on table '%2'."},
    {2601, 14, 1, "Cannot insert duplicate key row in object 'dbo.%1' with unique index '%2'."},
    {2627, 14, 1, "Violation of %1 constraint '%2'. Cannot insert duplicate key in object 'dbo.%3'."},
    {2705, 16, 3,
     "Column names in each table must be unique. Column name '%1' in table '%2' is specified more than "
     "once."},
    {2714, 16, 6, "There is already an object named '%1' in the database."},
    {2715, 16, 6, "Column, parameter, or variable #%1: Cannot find data type %2."},
    {2716, 16, 1, "Column, parameter, or variable #%1: Cannot specify a column width on data type %2."},
    {2717, 15, 2, "The size (%1) given to the type '%2' exceeds the maximum allowed (4000)."},
    {2739, 16, 1, "The text, ntext, and image data types are invalid for local variables."},
    {2744, 16, 2,
     "Multiple identity columns specified for table '%1'. Only one identity column per table is "
     "allowed."},
    {2747, 16, 1,
     "Too many substitution parameters for RAISERROR. Cannot exceed 20 substitution parameters."},
    {2748, 16, 1, "Cannot specify %1 data type (parameter %2) as a substitution parameter."},
    {2749, 16, 2,
     "Identity column '%1' must be of data type int, bigint, smallint, tinyint, or decimal or numeric with a "
     "scale of 0, and constrained to be nonnullable."},
    {2752, 16, 1, "Identity column '%1' contains invalid SEED."},
    {2786, 16, 1,
     "The data type of substitution parameter %1 does not match the expected type of the format "
     "specification."},
    {2787, 16, 1, "Invalid format specification: '%1'."},
    {2812, 16, 62, "Could not find stored procedure '%1'."},
    {3623, 16, 1, "An invalid floating point operation occurred."},
    {3701, 11, 5, "Cannot drop the %1 '%2', because it does not exist or you do not have permission."},
    {3726, 16, 1, "Could not drop object '%1' because it is referenced by a FOREIGN KEY constraint."},
    {3902, 16, 1, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3903, 16, 1, "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3930, 16, 1,
     "The current transaction cannot be committed and cannot support operations that write to the log file. Roll "
     "back the transaction."},
    {4060, 11, 1, "Cannot open database \"%1\" requested by the login. The login failed."},
    {4104, 16, 1, "The multi-part identifier \"%1\" could not be bound."},
    {4115, 15, 1,
     "The reference to column \"%1\" is not allowed in an argument to a TOP, OFFSET, or FETCH clause. Only "
     "references to columns at an outer scope or standalone expressions and subqueries are allowed here."},
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
    {4506, 16, 1,
     "Column names in each view or function must be unique. Column name '%1' in view or function '%2' is "
     "specified more than once."},
    {4508, 16, 1,
     "Views or functions are not allowed on temporary tables. Table names that begin with '#' denote "
     "temporary tables."},
    {4511, 16, 1, "Create View or Function failed because no column name was specified for column %1."},
    {4701, 16, 1, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {4712, 16, 1, "Cannot truncate table '%1' because it is being referenced by a FOREIGN KEY constraint."},
    {4901, 16, 1,
     "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition "
     "specified, or the column being added is an identity or timestamp column, or alternatively if none of "
     "the previous conditions are satisfied the table must be empty to allow addition of this column. Column "
     "'%1' cannot be added to non-empty table '%2' because it does not satisfy these conditions."},
    {4902, 16, 1, "Cannot find the object \"%1\" because it does not exist or you do not have permissions."},
    {8101, 16, 1,
     "An explicit value for the identity column in table '%1' can only be specified when a column list is "
     "used and IDENTITY_INSERT is ON."},
    {8102, 16, 1, "Cannot update identity column '%1'."},
    {8106, 16, 1, "Table '%1' does not have the identity property. Cannot perform SET operation."},
    {8107, 16, 1,
     "IDENTITY_INSERT is already ON for table '%1'. Cannot perform SET operation for table '%2'."},
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
    {8152, 16, 14, "String or binary data would be truncated."},
    {8155, 16, 2, "No column name was specified for column %1 of '%2'."},
    {8156, 16, 1, "The column '%1' was specified multiple times for '%2'."},
    {8158, 16, 1, "'%1' has more columns than were specified in the column list."},
    {8159, 16, 1, "'%1' has fewer columns than were specified in the column list."},
    {8169, 16, 2, "Conversion failed when converting from a character string to uniqueidentifier."},
    {8170, 16, 2, "Insufficient result space to convert uniqueidentifier value to char."},
    {8649, 17, 1, "The query has been canceled because it takes more work than the session allows."},
    {9809, 16, 1, "The style %1 is not supported for conversions from %2 to %3."},
    {9810, 16, 1, "The datepart %1 is not supported by date function %2 for data type %3."},
    {10734, 15, 1,
     "Variable assignment is not allowed in a statement containing a top level UNION, INTERSECT or EXCEPT "
     "operator."},
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
  // After a value that cannot be converted the server ends the batch and the transaction.
  switch (error.number) {
  case 235:
  case 241:
  case 242:
  case 244:
  case 245:
  case 248:
  case 293:
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
  case 217:
  case 220:
  case 232:
  case 234:
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
  case 1222:
  case 1505:
  case 1913:
  case 2601:
  case 2627:
  case 2747:
  case 2748:
  case 2786:
  case 2787:
  case 2812:
  case 3623:
  case 3701:
  case 3726:
  case 3902:
  case 3903:
  case 4712:
  case 8115:
  case 8134:
  case 8144:
  case 8145:
  case 8152:
  case 8170: return false;
  default: return error.number < 50000;
  }
}

} // namespace tsql
