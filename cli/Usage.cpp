#include "cli/Usage.h"

namespace bomcall {

const char kUsage[] =
    R"(bomcall calls a method of QorvaneMBomBill by name.

  bomcall --list [CLASS]                          the classes, their methods and parameters
  bomcall --check                                 makes an object of each outside class and of each
                                                  of the component's: which one is missing?
  bomcall --help CLASS.METHOD                     one method and its parameters
  bomcall [OPTION…] CLASS.METHOD [NAME=VALUE…]    calls the method and shows the result
  bomcall [OPTION…] --batch FILE.jsonl            calls from a file, on one object a class
  bomcall [OPTION…] bom REPORT …                  trees and checks of BOMs: bomcall bom --help

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

Exit status: 0 the call was made, 1 it raised an error or --check found something missing, 2 the
command line is wrong, 3 a condition of --fail-if holds.
)";

const char kBomUsage[] =
    R"(bomcall bom reports on the BOMs of a connection. It reads them by queries of its own and changes
nothing.

  bomcall bom tree NUMBER [--depth N] [--qty Q]   what a BOM is made of, level by level
  bomcall bom tree NUMBER --dot | --html          the same as a picture for Graphviz, or as a page
  bomcall bom where-used ITEM [--top]             the BOMs that use an item, directly and through
                                                  others; --top: only products that nothing uses
  bomcall bom diff A B                            lines added, removed and changed from BOM A to B
  bomcall bom check                               cycles; missing parents, items and units; lines of
                                                  one item that are valid on the same day; items with
                                                  several BOMs in use. Exit status 3 if any is found
  bomcall bom cost-lines [NUMBER] [--qty Q]       what is bought for a BOM, each item once; without a
                                                  NUMBER each line of each BOM in use, for one of its
                                                  item

Options such as --csv, --json, --columns, --dsn and --connection stand anywhere.

Quantities are in the base unit of the item and are multiplied exactly; what has more than 20
digits behind the point is rounded to 20 when it is shown. Scrap, yield and percentages do not
count in them. A line goes on in the newest BOM of its item that is in use, or in the one that a
customer's line names. A BOM that is above itself is said to be a cycle and not gone into again.
)";

} // namespace bomcall
