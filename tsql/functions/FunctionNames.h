// The names under which the functions are registered with SQLite; the emitter calls them by the same names.
// They are also in the SQL of CHECK constraints and triggers that a database file keeps: a name that has been
// released must stay.
#pragma once

namespace tsql::names {

// Conversions and what a statement needs while it runs.
inline constexpr const char* kCast = "t_cast";
inline constexpr const char* kTryCast = "t_try_cast";
inline constexpr const char* kStore = "t_store";
inline constexpr const char* kNotNull = "t_not_null";
inline constexpr const char* kRowLimit = "t_row_limit";
inline constexpr const char* kAtLeast = "t_at_least";
inline constexpr const char* kAssignVariable = "t_assign";
inline constexpr const char* kNextIdentity = "t_next_identity"; // the DEFAULT of a column that is counted
inline constexpr const char* kGivenIdentity = "t_given_identity";
inline constexpr const char* kThen = "t_then";
inline constexpr const char* kPercentOf = "t_percent_of";
inline constexpr const char* kPack = "t_pack";
inline constexpr const char* kRows = "t_rows";
inline constexpr const char* kSplit = "t_split";
inline constexpr const char* kStringAggregate = "t_string_agg";
inline constexpr const char* kVariable = "t_variable";
inline constexpr const char* kCallFunction =
    "t_call"; // a user's function; its name in front of its arguments
inline constexpr const char* kFunctionRows =
    "t_function_rows";                                      // the same as a table, with columns c0, c1 ...
inline constexpr const char* kStagedRows = "t_staged_rows"; // a table with columns c0, c1 ...
// The same rows as a trigger sees them, with the columns of its table only.
inline constexpr const char* kInsertedRows = "t_inserted";
inline constexpr const char* kDeletedRows = "t_deleted";
inline constexpr const char* kMergedRows = "t_merged"; // those that a MERGE has joined
inline constexpr const char* kUpdated = "t_updated";
inline constexpr const char* kSuspect = "t_suspect";
inline constexpr const char* kRecursion = "t_recursion";
inline constexpr const char* kSingle = "t_single";

// Arithmetic.
inline constexpr const char* kRange = "t_range";
inline constexpr const char* kDivide = "t_divide";
inline constexpr const char* kModulo = "t_modulo";
inline constexpr const char* kFloatDivide = "t_float_divide";
inline constexpr const char* kFloatModulo = "t_float_modulo";
inline constexpr const char* kFinite = "t_finite";
inline constexpr const char* kDecimal = "t_decimal";
inline constexpr const char* kNegate = "t_negate";
inline constexpr const char* kCompute = "t_compute";
inline constexpr const char* kSum = "t_sum";
inline constexpr const char* kAverage = "t_average";
inline constexpr const char* kDeviation = "t_stdev";
inline constexpr const char* kPopulationDeviation = "t_stdevp";
inline constexpr const char* kVariance = "t_var";
inline constexpr const char* kPopulationVariance = "t_varp";
inline constexpr const char* kMoment = "t_moment";

// Binary values.
inline constexpr const char* kBinaryKey = "t_binary_key";

// Texts.
inline constexpr const char* kLike = "t_like";
inline constexpr const char* kLikePadded = "t_like_padded";
inline constexpr const char* kLikeCollated = "t_like_collated";
inline constexpr const char* kLen = "t_len";
inline constexpr const char* kDataLength = "t_datalength";
inline constexpr const char* kConcat = "t_concat";
inline constexpr const char* kConcatWithSeparator = "t_concat_ws";
inline constexpr const char* kTrimCharacters = "t_trim";
inline constexpr const char* kTranslate = "t_translate";
inline constexpr const char* kTrimExactly = "t_trim_exact";
inline constexpr const char* kTranslateExactly = "t_translate_exact";
inline constexpr const char* kParseName = "t_parsename";
inline constexpr const char* kUpper = "t_upper";
inline constexpr const char* kLower = "t_lower";
inline constexpr const char* kReverse = "t_reverse";
inline constexpr const char* kLeft = "t_left";
inline constexpr const char* kRight = "t_right";
inline constexpr const char* kSubstring = "t_substring";
inline constexpr const char* kReplace = "t_replace";
inline constexpr const char* kCharIndex = "t_charindex";
inline constexpr const char* kPatIndex = "t_patindex";
inline constexpr const char* kReplaceExactly = "t_replace_exact";
inline constexpr const char* kCharIndexExactly = "t_charindex_exact";
inline constexpr const char* kPatIndexCased = "t_patindex_cased";
inline constexpr const char* kPatIndexBinary = "t_patindex_binary";
inline constexpr const char* kReplicate = "t_replicate";
inline constexpr const char* kSpace = "t_space";
inline constexpr const char* kStuff = "t_stuff";
inline constexpr const char* kChar = "t_char";
inline constexpr const char* kAscii = "t_ascii";
inline constexpr const char* kUnicode = "t_unicode";
inline constexpr const char* kQuoteName = "t_quotename";
inline constexpr const char* kStr = "t_str";
inline constexpr const char* kSoundex = "t_soundex";
inline constexpr const char* kDifference = "t_difference";
inline constexpr const char* kHashBytes = "t_hashbytes";
inline constexpr const char* kIsNumeric = "t_isnumeric";
inline constexpr const char* kIsDate = "t_isdate";

// Dates.
inline constexpr const char* kGetDate = "t_getdate";
inline constexpr const char* kGetUtcDate = "t_getutcdate";
inline constexpr const char* kSysDateTime = "t_sysdatetime";
inline constexpr const char* kSysUtcDateTime = "t_sysutcdatetime";
inline constexpr const char* kDateDiffBig = "t_datediff_big";
inline constexpr const char* kDateFromParts = "t_datefromparts";
inline constexpr const char* kEndOfMonth = "t_eomonth";
inline constexpr const char* kDateAdd = "t_dateadd";
inline constexpr const char* kDateDiff = "t_datediff";
inline constexpr const char* kDatePart = "t_datepart";
inline constexpr const char* kDateName = "t_datename";

// Numbers.
inline constexpr const char* kAbs = "t_abs";
inline constexpr const char* kSign = "t_sign";
inline constexpr const char* kFloor = "t_floor";
inline constexpr const char* kCeiling = "t_ceiling";
inline constexpr const char* kRound = "t_round";
inline constexpr const char* kRandom = "t_rand";
inline constexpr const char* kAcos = "t_acos";
inline constexpr const char* kAsin = "t_asin";
inline constexpr const char* kAtan = "t_atan";
inline constexpr const char* kAtan2 = "t_atn2";
inline constexpr const char* kCos = "t_cos";
inline constexpr const char* kCot = "t_cot";
inline constexpr const char* kSin = "t_sin";
inline constexpr const char* kTan = "t_tan";
inline constexpr const char* kDegrees = "t_degrees";
inline constexpr const char* kRadians = "t_radians";
inline constexpr const char* kSqrt = "t_sqrt";
inline constexpr const char* kPower = "t_power";
inline constexpr const char* kExp = "t_exp";
inline constexpr const char* kLog = "t_log";
inline constexpr const char* kLog10 = "t_log10";
inline constexpr const char* kSquare = "t_square";

// The catalog.
inline constexpr const char* kNewId = "t_newid";
inline constexpr const char* kObjectId = "t_object_id";
inline constexpr const char* kIdentitySeed = "t_ident_seed";
inline constexpr const char* kIdentityIncrement = "t_ident_incr";
inline constexpr const char* kCurrentIdentity = "t_ident_current";
inline constexpr const char* kCursorStatus = "t_cursor_status";
inline constexpr const char* kTriggerTable = "t_trigger_table";
inline constexpr const char* kIsInsteadOf = "t_is_instead_of";
inline constexpr const char* kObjectName = "t_object_name";
inline constexpr const char* kObjectSchemaName = "t_object_schema_name";
inline constexpr const char* kObjectProperty = "t_object_property";
inline constexpr const char* kColumnProperty = "t_column_property";
inline constexpr const char* kColumnName = "t_column_name";
inline constexpr const char* kObjectDefinition = "t_object_definition";
inline constexpr const char* kSchemaName = "t_schema_name";
inline constexpr const char* kSchemaId = "t_schema_id";
inline constexpr const char* kColLength = "t_col_length";
inline constexpr const char* kDatabaseId = "t_db_id";
inline constexpr const char* kDatabaseName = "t_db_name";
inline constexpr const char* kUserName = "t_user_name";
inline constexpr const char* kLoginName = "t_login_name";
inline constexpr const char* kServerTypeId = "t_server_type_id";
inline constexpr const char* kServerTypeName = "t_server_type_name";
inline constexpr const char* kIsMember = "t_is_member";
// Of objects by their keys, which no batch can write.
inline constexpr const char* kKeyId = "t_key_id";
inline constexpr const char* kKeyName = "t_key_name";
inline constexpr const char* kKeySchema = "t_key_schema";
inline constexpr const char* kKeyColLength = "t_key_col_length";
inline constexpr const char* kTypeName = "t_type_name";
inline constexpr const char* kTypeId = "t_type_id";
inline constexpr const char* kTypePrecision = "t_type_precision";
inline constexpr const char* kTypeScale = "t_type_scale";
inline constexpr const char* kColumnCollation = "t_column_collation";
inline constexpr const char* kCharLength = "t_char_length";

} // namespace tsql::names
