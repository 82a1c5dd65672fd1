#include "cli/Usage.h"

namespace bomcall {

const char kUsage[] =
    R"(bomcall calls a method of QorvaneMBomBill by name.

  bomcall --list [CLASS]                          the classes, their methods and parameters
  bomcall --help CLASS.METHOD                     one method and its parameters
  bomcall [OPTION…] CLASS.METHOD [NAME=VALUE…]    calls the method and shows the result
  bomcall [OPTION…] --batch FILE.jsonl            calls from a file, on one object a class

A VALUE is a plain value, or JSON where the parameter is an object: {…} becomes a Dictionary,
[…] a Vector (of Dictionaries), null Nothing. NAME=@FILE reads the JSON from a file, NAME=@- from
the standard input: UTF-8 or UTF-16. Arguments that the method changes are shown after the call.

  --dsn DESCRIPTOR  the connection descriptor, for the parameter sDsn or sToParse; else
  -c, --connection NAME  the one of that name in the profile file; else the environment variable
                    BOMCALL_DSN; else the profile's connection "default"
  --lang LANGUAGE   chs, cht or en
  --json, --csv, --vertical  the result as JSON; its rows as CSV; a line for each value
  --columns A,B     of the result's rows only these columns
  --fail-if NAME=VALUE  exit status 3 if the result (named Result) or the argument is VALUE
  --encoding gbk    files that are neither UTF-8 nor UTF-16 are GBK
  --trace           the outside calls, statements and votes of the call
  --no-host         without a unit of work around the call; so too where no host is registered
  --keep-going      a batch goes on when a call fails, and each call is kept by itself
  -h, --help, --version

A line of a batch is {"call": "CLASS.METHOD", "arguments": {"NAME": VALUE, …}, "as": "NAME"}; the
last two may be missing. {"$result": "NAME"} as an argument is the result of the earlier line that
is called so. Without --keep-going the batch is one unit of work: the first call that raises an
error, votes to abort or meets a condition of --fail-if ends it, and nothing is kept.

The profile file has a line "NAME = DESCRIPTOR" a connection, "#" in front of remarks. It is
%APPDATA%\bomcall\connections.txt, or what BOMCALL_PROFILE names. Passwords in it can be read by
whoever can read the file: keep any there at your own risk.

On a terminal lines are cut to its width and headers are bold; NO_COLOR=1 leaves them plain.

Exit status: 0 the call was made, 1 it raised an error, 2 the command line is wrong, 3 a condition
of --fail-if holds.
)";

} // namespace bomcall
