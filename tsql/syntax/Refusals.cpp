#include "tsql/syntax/Refusals.h"

#include <algorithm>

#include "tsql/values/Collation.h"
#include "tsql/values/Errors.h"

namespace tsql {
namespace {

constexpr std::string_view kStatements =
    "ADD SENSITIVITY, ADD SIGNATURE, BACKUP, BEGIN ATOMIC, BEGIN CONVERSATION, BEGIN DIALOG, "
    "BEGIN DISTRIBUTED, BULK INSERT, CLOSE ALL SYMMETRIC KEYS, CLOSE MASTER KEY, "
    "CLOSE SYMMETRIC KEY, DBCC, DROP SENSITIVITY, DROP SIGNATURE, DUMP, "
    "END CONVERSATION, EXEC AS, EXECUTE AS, GET CONVERSATION, INSERT BULK, KILL, LINENO, LOAD, "
    "MOVE CONVERSATION, OPEN MASTER KEY, OPEN SYMMETRIC KEY, READTEXT, RECEIVE, RECONFIGURE, "
    "RESTORE, REVERT, SEND ON, SETUSER, SHUTDOWN, UPDATETEXT, WRITETEXT";

constexpr std::string_view kCreate =
    "AGGREGATE, APPLICATION ROLE, ASSEMBLY, ASYMMETRIC KEY, AVAILABILITY GROUP, BROKER PRIORITY, "
    "CERTIFICATE, CLUSTERED COLUMNSTORE INDEX, COLUMN ENCRYPTION KEY, COLUMN MASTER KEY, "
    "COLUMNSTORE INDEX, CONTRACT, CREDENTIAL, CRYPTOGRAPHIC PROVIDER, DATABASE, DEFAULT, ENDPOINT, "
    "EVENT NOTIFICATION, EVENT SESSION, EXTERNAL, FULLTEXT, LOGIN, MASTER KEY, MESSAGE TYPE, "
    "NONCLUSTERED COLUMNSTORE INDEX, PARTITION FUNCTION, PARTITION SCHEME, PRIMARY XML INDEX, QUEUE, "
    "REMOTE SERVICE BINDING, RESOURCE POOL, ROLE, ROUTE, RULE, SEARCH PROPERTY LIST, "
    "SECURITY POLICY, SELECTIVE XML INDEX, SEQUENCE, SERVER AUDIT, SERVER ROLE, SERVICE, "
    "SPATIAL INDEX, STATISTICS, SYMMETRIC KEY, SYNONYM, TYPE, USER, WORKLOAD GROUP, "
    "XML INDEX, XML SCHEMA COLLECTION";

constexpr std::string_view kAlter =
    "APPLICATION ROLE, ASSEMBLY, ASYMMETRIC KEY, AUTHORIZATION, AVAILABILITY GROUP, BROKER PRIORITY, "
    "CERTIFICATE, COLUMN ENCRYPTION KEY, CREDENTIAL, CRYPTOGRAPHIC PROVIDER, DATABASE, ENDPOINT, "
    "EVENT SESSION, EXTERNAL, FULLTEXT, INDEX, LOGIN, MASTER KEY, MESSAGE TYPE, "
    "PARTITION FUNCTION, PARTITION SCHEME, QUEUE, REMOTE SERVICE BINDING, RESOURCE GOVERNOR, "
    "RESOURCE POOL, ROLE, ROUTE, SEARCH PROPERTY LIST, SECURITY POLICY, SEQUENCE, "
    "SERVER AUDIT, SERVER CONFIGURATION, SERVER ROLE, SERVICE, SYMMETRIC KEY, USER, "
    "WORKLOAD GROUP, XML SCHEMA COLLECTION";

constexpr std::string_view kDrop =
    "AGGREGATE, APPLICATION ROLE, ASSEMBLY, ASYMMETRIC KEY, AVAILABILITY GROUP, BROKER PRIORITY, "
    "CERTIFICATE, COLUMN ENCRYPTION KEY, COLUMN MASTER KEY, CONTRACT, CREDENTIAL, "
    "CRYPTOGRAPHIC PROVIDER, DATABASE, DEFAULT, ENDPOINT, EVENT NOTIFICATION, EVENT SESSION, EXTERNAL, "
    "FULLTEXT, LOGIN, MASTER KEY, MESSAGE TYPE, PARTITION FUNCTION, PARTITION SCHEME, QUEUE, "
    "REMOTE SERVICE BINDING, RESOURCE POOL, ROLE, ROUTE, RULE, SEARCH PROPERTY LIST, "
    "SECURITY POLICY, SEQUENCE, SERVER AUDIT, SERVER ROLE, SERVICE, STATISTICS, SYMMETRIC KEY, "
    "SYNONYM, TYPE, USER, WORKLOAD GROUP, XML SCHEMA COLLECTION";

constexpr std::string_view kAlterTable = "DISABLE, ENABLE, REBUILD, SET, SWITCH";

constexpr std::string_view kFunctions =
    "APPLOCK_MODE, APPLOCK_TEST, APPROX_COUNT_DISTINCT, ASSEMBLYPROPERTY, ASYMKEYPROPERTY, ASYMKEY_ID, "
    "BINARY_CHECKSUM, CERTENCODED, CERTPRIVATEKEY, CERTPROPERTY, CERT_ID, CHECKSUM, CHECKSUM_AGG, "
    "COLLATIONPROPERTY, COLUMNS_UPDATED, COMPRESS, CONNECTIONPROPERTY, "
    "CONTAINS, CONTEXT_INFO, CRYPT_GEN_RANDOM, CURRENT_REQUEST_ID, CURRENT_TIMEZONE, "
    "CURRENT_TIMEZONE_ID, CURRENT_TRANSACTION_ID, DATABASEPROPERTY, "
    "DATABASEPROPERTYEX, DATABASE_PRINCIPAL_ID, DATETIMEOFFSETFROMPARTS, "
    "DECOMPRESS, DECRYPTBYASYMKEY, DECRYPTBYCERT, DECRYPTBYKEY, DECRYPTBYKEYAUTOASYMKEY, "
    "DECRYPTBYKEYAUTOCERT, DECRYPTBYPASSPHRASE, ENCRYPTBYASYMKEY, ENCRYPTBYCERT, "
    "ENCRYPTBYKEY, ENCRYPTBYPASSPHRASE, EVENTDATA, FILEGROUPPROPERTY, FILEGROUP_ID, FILEGROUP_NAME, "
    "FILEPROPERTY, FILEPROPERTYEX, FILETABLEROOTPATH, FILE_ID, FILE_IDEX, FILE_NAME, FORMAT, "
    "FORMATMESSAGE, FREETEXT, FULLTEXTCATALOGPROPERTY, FULLTEXTSERVICEPROPERTY, GETANSINULL, "
    "GETPATHLOCATOR, GET_FILESTREAM_TRANSACTION_CONTEXT, GET_TRANSMISSION_STATUS, "
    "HAS_DBACCESS, HAS_PERMS_BY_NAME, HOST_ID, "
    "INDEXKEY_PROPERTY, INDEXPROPERTY, INDEX_COL, ISJSON, IS_OBJECTSIGNED, "
    "IS_ROLEMEMBER, JSON_MODIFY, JSON_QUERY, JSON_VALUE, KEY_GUID, KEY_ID, KEY_NAME, "
    "LOGINPROPERTY, MIN_ACTIVE_ROWVERSION, NEWSEQUENTIALID, OBJECTPROPERTYEX, ORIGINAL_DB_NAME, "
    "PARSE, PERCENTILE_CONT, "
    "PERCENTILE_DISC, PERMISSIONS, PUBLISHINGSERVERNAME, PWDCOMPARE, PWDENCRYPT, "
    "SERVERPROPERTY, SESSIONPROPERTY, SESSION_CONTEXT, SIGNBYASYMKEY, SIGNBYCERT, "
    "SQL_VARIANT_PROPERTY, STATS_DATE, STRING_ESCAPE, SUSER_ID, SUSER_SID, "
    "SWITCHOFFSET, SYMKEYPROPERTY, SYSDATETIMEOFFSET, TERTIARY_WEIGHTS, "
    "TEXTPTR, TEXTVALID, TODATETIMEOFFSET, TRY_PARSE, TYPEPROPERTY, "
    "USER_ID, VERIFYSIGNEDBYASYMKEY, VERIFYSIGNEDBYCERT";

constexpr std::string_view kTypes =
    "DATETIMEOFFSET, GEOGRAPHY, GEOMETRY, HIERARCHYID, ROWVERSION, SQL_VARIANT, "
    "TIMESTAMP, XML";

constexpr std::string_view kGlobals =
    "@@CONNECTIONS, @@CPU_BUSY, @@DBTS, @@IDLE, @@IO_BUSY, @@MAX_CONNECTIONS, @@MICROSOFTVERSION, "
    "@@PACKET_ERRORS, @@PACK_RECEIVED, @@PACK_SENT, @@PROCID, @@REMSERVER, @@SERVICENAME, @@TIMETICKS, "
    "@@TOTAL_ERRORS, @@TOTAL_READ, @@TOTAL_WRITE, @@VERSION";

constexpr std::string_view kOptions =
    "ANSI_DEFAULTS, ANSI_NULL_DFLT_OFF ON, ANSI_NULL_DFLT_ON OFF, "
    "ANSI_WARNINGS OFF, ARITHABORT OFF, ARITHIGNORE ON, CONTEXT_INFO, "
    "CURSOR_CLOSE_ON_COMMIT ON, FIPS_FLAGGER, FMTONLY ON, FORCEPLAN ON, IMPLICIT_TRANSACTIONS ON, "
    "NOEXEC ON, NUMERIC_ROUNDABORT ON, OFFSETS, PARSEONLY ON, "
    "REMOTE_PROC_TRANSACTIONS ON, SHOWPLAN_ALL ON, SHOWPLAN_TEXT ON, SHOWPLAN_XML ON, STATISTICS IO ON, "
    "STATISTICS PROFILE ON, STATISTICS TIME ON, STATISTICS XML ON";

constexpr std::string_view kTableHints =
    "IGNORE_CONSTRAINTS, IGNORE_TRIGGERS, KEEPDEFAULTS, KEEPIDENTITY, SNAPSHOT, SPATIAL_WINDOW_MAX_CELLS";

constexpr std::string_view kProcedures =
    "sp_add_job, sp_addextendedproperty, sp_addlinkedserver, sp_addlinkedsrvlogin, sp_addlogin, "
    "sp_addmessage, sp_addrole, sp_addrolemember, sp_addsrvrolemember, sp_addtype, sp_adduser, "
    "sp_altermessage, sp_approlepassword, sp_attach_db, sp_autostats, sp_bindefault, sp_bindrule, "
    "sp_bindsession, sp_changedbowner, sp_changeobjectowner, sp_column_privileges, sp_columns, "
    "sp_configure, sp_createstats, sp_cursor, sp_cursorclose, sp_cursorexecute, sp_cursorfetch, "
    "sp_cursoropen, sp_cursoroption, sp_cursorprepare, sp_cursorprepexec, sp_cursorunprepare, "
    "sp_databases, sp_datatype_info, sp_dboption, sp_defaultdb, sp_defaultlanguage, sp_delete_job, "
    "sp_depends, sp_describe_first_result_set, sp_describe_undeclared_parameters, sp_detach_db, "
    "sp_dropextendedproperty, sp_droplogin, sp_dropmessage, sp_droprole, sp_droprolemember, "
    "sp_dropserver, sp_droptype, sp_dropuser, sp_estimate_data_compression_savings, sp_execute, "
    "sp_execute_external_script, sp_fkeys, sp_fulltext_catalog, sp_fulltext_database, "
    "sp_fulltext_table, sp_getapplock, sp_getbindtoken, sp_grantdbaccess, sp_grantlogin, sp_help, "
    "sp_helpconstraint, sp_helpdb, sp_helpfile, sp_helpfilegroup, sp_helpindex, sp_helplanguage, "
    "sp_helplogins, sp_helprole, sp_helprolemember, sp_helprotect, sp_helpserver, sp_helpsort, "
    "sp_helpsrvrolemember, sp_helpstats, sp_helptrigger, sp_helpuser, sp_indexoption, "
    "sp_invalidate_textptr, sp_linkedservers, sp_lock, sp_monitor, sp_oacreate, sp_oadestroy, "
    "sp_oageterrorinfo, sp_oagetproperty, sp_oamethod, sp_oasetproperty, sp_password, sp_pkeys, "
    "sp_prepare, sp_prepexec, sp_procoption, sp_recompile, sp_refreshsqlmodule, sp_refreshview, "
    "sp_releaseapplock, sp_renamedb, sp_replicationdboption, sp_reset_connection, "
    "sp_resetstatus, sp_server_info, sp_serveroption, sp_set_session_context, sp_setapprole, "
    "sp_setnetname, sp_settriggerorder, sp_spaceused, sp_special_columns, sp_sproc_columns, "
    "sp_start_job, sp_statistics, sp_stored_procedures, sp_table_privileges, sp_tableoption, "
    "sp_tables, sp_trace_create, sp_unbindefault, sp_unbindrule, sp_unprepare, sp_unsetapprole, "
    "sp_updateextendedproperty, sp_updatestats, sp_validatelogins, sp_who, sp_who2, "
    "sp_xml_preparedocument, sp_xml_removedocument, xp_cmdshell, xp_dirtree, xp_enumgroups, "
    "xp_fileexist, xp_fixeddrives, xp_grantlogin, xp_logevent, xp_loginconfig, xp_logininfo, xp_msver, "
    "xp_readerrorlog, xp_regread, xp_regwrite, xp_revokelogin, xp_sprintf, xp_sqlmaint, xp_sscanf";

constexpr std::string_view kSystemViews =
    "information_schema.check_constraints, information_schema.column_domain_usage, "
    "information_schema.column_privileges, information_schema.constraint_column_usage, "
    "information_schema.constraint_table_usage, information_schema.domain_constraints, "
    "information_schema.domains, information_schema.parameters, "
    "information_schema.referential_constraints, information_schema.routine_columns, "
    "information_schema.sequences, "
    "information_schema.table_privileges, "
    "information_schema.view_column_usage, information_schema.view_table_usage, "
    "sys.all_columns, sys.all_objects, sys.all_parameters, "
    "sys.all_sql_modules, sys.all_views, sys.allocation_units, sys.assemblies, sys.assembly_files, "
    "sys.assembly_modules, sys.assembly_types, sys.asymmetric_keys, sys.backup_devices, "
    "sys.certificates, sys.change_tracking_databases, sys.change_tracking_tables, "
    "sys.column_type_usages, sys.column_xml_schema_collection_usages, "
    "sys.computed_columns, sys.configurations, sys.conversation_endpoints, sys.conversation_groups, "
    "sys.credentials, sys.data_spaces, sys.database_files, sys.database_mirroring, "
    "sys.database_permissions, sys.database_principals, sys.database_role_members, sys.databases, "
    "sys.dm_db_index_physical_stats, sys.dm_db_index_usage_stats, "
    "sys.dm_db_partition_stats, sys.dm_db_session_space_usage, sys.dm_exec_cached_plans, "
    "sys.dm_exec_connections, sys.dm_exec_query_stats, sys.dm_exec_requests, sys.dm_exec_sessions, "
    "sys.dm_io_virtual_file_stats, sys.dm_os_performance_counters, sys.dm_os_sys_info, "
    "sys.dm_os_wait_stats, sys.dm_os_waiting_tasks, sys.dm_sql_referenced_entities, "
    "sys.dm_sql_referencing_entities, sys.dm_tran_active_transactions, sys.dm_tran_locks, "
    "sys.dm_tran_session_transactions, sys.endpoints, sys.event_notifications, sys.events, "
    "sys.extended_procedures, sys.extended_properties, sys.filegroups, "
    "sys.fulltext_catalogs, sys.fulltext_indexes, sys.identity_columns, "
    "sys.internal_tables, sys.linked_logins, "
    "sys.login_token, sys.master_files, sys.messages, sys.numbered_procedures, "
    "sys.parameter_type_usages, sys.parameters, sys.partition_functions, sys.partition_parameters, "
    "sys.partition_range_values, sys.partition_schemes, sys.partitions, sys.plan_guides, "
    "sys.routes, sys.securable_classes, sys.sequences, "
    "sys.server_permissions, sys.server_principals, sys.server_role_members, sys.servers, "
    "sys.service_queues, sys.services, sys.spatial_indexes, sys.sql_dependencies, "
    "sys.sql_expression_dependencies, sys.sql_logins, sys.stats, sys.stats_columns, "
    "sys.symmetric_keys, sys.synonyms, sys.syscharsets, sys.syscolumns, sys.syscomments, "
    "sys.sysconfigures, sys.sysconstraints, sys.sysdatabases, sys.sysdepends, sys.sysfilegroups, "
    "sys.sysfiles, sys.sysforeignkeys, sys.sysindexes, sys.sysindexkeys, sys.syslanguages, "
    "sys.syslockinfo, sys.syslogins, sys.sysmembers, sys.sysmessages, sys.sysobjects, "
    "sys.syspermissions, sys.sysprocesses, sys.sysprotects, sys.sysreferences, sys.sysservers, "
    "sys.system_columns, sys.system_objects, sys.system_sql_modules, sys.system_views, sys.systypes, "
    "sys.sysusers, sys.table_types, sys.time_zone_info, sys.trigger_events, "
    "sys.type_assembly_usages, sys.user_token, sys.xml_indexes, "
    "sys.xml_schema_collections, syscharsets, sysconfigures, sysconstraints, "
    "sysdatabases, sysdepends, sysfilegroups, sysfiles, sysforeignkeys, sysindexkeys, "
    "syslanguages, syslockinfo, syslogins, sysmembers, sysmessages, syspermissions, sysprocesses, "
    "sysprotects, sysreferences, sysservers, sysusers";

constexpr std::string_view kSystemColumns =
    "information_schema.routines.character_maximum_length, information_schema.routines.created, "
    "information_schema.routines.data_type, information_schema.routines.last_altered, "
    "information_schema.routines.routine_body, information_schema.routines.sql_data_access, "
    "sys.check_constraints.create_date, sys.check_constraints.definition, "
    "sys.check_constraints.is_ms_shipped, sys.check_constraints.is_not_trusted, "
    "sys.check_constraints.is_system_named, sys.check_constraints.modify_date, "
    "sys.check_constraints.parent_column_id, sys.check_constraints.principal_id, "
    "sys.check_constraints.uses_database_collation, "
    "sys.columns.default_object_id, sys.columns.is_rowguidcol, "
    "sys.default_constraints.create_date, sys.default_constraints.definition, "
    "sys.default_constraints.is_ms_shipped, sys.default_constraints.is_system_named, "
    "sys.default_constraints.modify_date, sys.default_constraints.principal_id, "
    "sys.foreign_keys.create_date, sys.foreign_keys.is_ms_shipped, "
    "sys.foreign_keys.is_not_for_replication, sys.foreign_keys.is_not_trusted, "
    "sys.foreign_keys.is_system_named, sys.foreign_keys.key_index_id, sys.foreign_keys.modify_date, "
    "sys.foreign_keys.principal_id, sys.index_columns.partition_ordinal, "
    "sys.indexes.allow_page_locks, sys.indexes.allow_row_locks, sys.indexes.data_space_id, "
    "sys.indexes.fill_factor, sys.indexes.filter_definition, sys.indexes.has_filter, "
    "sys.indexes.ignore_dup_key, sys.indexes.is_disabled, sys.indexes.is_hypothetical, "
    "sys.indexes.is_padded, sys.indexes.type, sys.indexes.type_desc, "
    "sys.key_constraints.create_date, sys.key_constraints.is_ms_shipped, "
    "sys.key_constraints.is_system_named, sys.key_constraints.modify_date, "
    "sys.key_constraints.principal_id, sys.objects.create_date, sys.objects.is_ms_shipped, "
    "sys.objects.is_published, sys.objects.is_schema_published, sys.objects.modify_date, "
    "sys.objects.principal_id, sys.procedures.create_date, sys.procedures.is_auto_executed, "
    "sys.procedures.is_ms_shipped, sys.procedures.modify_date, sys.procedures.principal_id, "
    "sys.tables.create_date, sys.tables.is_ms_shipped, sys.tables.modify_date, "
    "sys.tables.parent_object_id, sys.tables.principal_id, sys.tables.type, sys.tables.type_desc, "
    "sys.types.collation_name, sys.types.default_object_id, sys.types.is_assembly_type, "
    "sys.types.is_table_type, sys.types.principal_id, sys.types.rule_object_id, "
    "sys.views.create_date, sys.views.is_ms_shipped, sys.views.modify_date, sys.views.principal_id, "
    "sys.views.with_check_option, syscomments.compressed, syscomments.ctext, syscomments.encrypted, "
    "syscomments.language, syscomments.status, syscomments.texttype, sysindexes.dpages, "
    "sysindexes.first, sysindexes.firstiam, sysindexes.impid, sysindexes.keycnt, sysindexes.keys, "
    "sysindexes.lockflags, sysindexes.maxirow, sysindexes.maxlen, sysindexes.minlen, "
    "sysindexes.origfillfactor, sysindexes.pgmodctr, sysindexes.reserved, sysindexes.reserved2, "
    "sysindexes.reserved3, sysindexes.reserved4, sysindexes.root, sysindexes.rowcnt, "
    "sysindexes.rowmodctr, sysindexes.rows, sysindexes.statblob, sysindexes.status, "
    "sysindexes.statversion, sysindexes.used, sysindexes.xmaxlen, sysobjects.base_schema_ver, "
    "sysobjects.cache, sysobjects.category, sysobjects.crdate, sysobjects.deltrig, "
    "sysobjects.ftcatid, sysobjects.indexdel, sysobjects.info, sysobjects.insertrig, "
    "sysobjects.instrig, sysobjects.parent_obj, sysobjects.refdate, sysobjects.replinfo, "
    "sysobjects.schema_ver, sysobjects.seltrig, sysobjects.stats_schema_ver, sysobjects.status, "
    "sysobjects.sysstat, sysobjects.updtrig, sysobjects.userstat, sysobjects.version";

std::string_view ListOf(RefusedKind kind) {
  switch (kind) {
  case RefusedKind::Statement: return kStatements;
  case RefusedKind::Create: return kCreate;
  case RefusedKind::Alter: return kAlter;
  case RefusedKind::Drop: return kDrop;
  case RefusedKind::AlterTable: return kAlterTable;
  case RefusedKind::Function: return kFunctions;
  case RefusedKind::Type: return kTypes;
  case RefusedKind::Global: return kGlobals;
  case RefusedKind::Option: return kOptions;
  case RefusedKind::TableHint: return kTableHints;
  case RefusedKind::Procedure: return kProcedures;
  case RefusedKind::SystemView: return kSystemViews;
  case RefusedKind::SystemColumn: break;
  }
  return kSystemColumns;
}

std::vector<std::string_view> Split(std::string_view list) {
  std::vector<std::string_view> names;
  while (!list.empty()) {
    const size_t end = std::min(list.find(", "), list.size());
    names.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 2, list.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

// What stands in front of the name in messages.
std::string_view PrefixOf(RefusedKind kind) {
  switch (kind) {
  case RefusedKind::Create: return "CREATE ";
  case RefusedKind::Alter: return "ALTER ";
  case RefusedKind::Drop: return "DROP ";
  case RefusedKind::AlterTable: return "ALTER TABLE ";
  case RefusedKind::Function: return "The function ";
  case RefusedKind::Type: return "The type ";
  case RefusedKind::Option: return "SET ";
  case RefusedKind::TableHint: return "The table hint ";
  case RefusedKind::Procedure: return "The procedure ";
  case RefusedKind::SystemView: return "The system view ";
  case RefusedKind::SystemColumn: return "The column ";
  default: return "";
  }
}

bool IsLowerCase(RefusedKind kind) {
  return kind >= RefusedKind::Procedure;
}

// The name as it is in the list, empty if it is not there.
std::string_view FindName(RefusedKind kind, std::string_view name) {
  const std::string wanted = IsLowerCase(kind) ? ToLower(name) : ToUpper(name);
  const std::span<const std::string_view> names = RefusedNames(kind);
  const auto found = std::lower_bound(names.begin(), names.end(), wanted);
  return found != names.end() && *found == wanted ? *found : std::string_view();
}

} // namespace

std::span<const std::string_view> RefusedNames(RefusedKind kind) {
  static const std::vector<std::vector<std::string_view>> lists = [] {
    std::vector<std::vector<std::string_view>> split;
    for (size_t i = 0; i <= static_cast<size_t>(RefusedKind::SystemColumn); ++i)
      split.push_back(Split(ListOf(static_cast<RefusedKind>(i))));
    return split;
  }();
  return lists[static_cast<size_t>(kind)];
}

void Refuse(RefusedConstruct what, int line) {
  Fail(kUnsupportedError, {what.Name()}, line);
}

bool IsRefused(RefusedKind kind, std::string_view name) {
  return !FindName(kind, name).empty();
}

void RefuseName(RefusedKind kind, std::string_view name, int line) {
  Fail(kUnsupportedError, {std::string(PrefixOf(kind)) + std::string(name)}, line);
}

void RefuseIfListed(RefusedKind kind, std::string_view name, int line) {
  const std::string_view listed = FindName(kind, name);
  if (!listed.empty()) RefuseName(kind, listed, line);
}

} // namespace tsql
