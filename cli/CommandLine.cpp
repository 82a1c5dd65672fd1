#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <utility>

#include "com/Text.h"

namespace bomcall {
namespace {

// What the parser fills, in UTF-8 as the library has it.
struct Parsed {
  std::string target;
  std::vector<std::string> values;
  std::string list;
  std::string help;
  std::string batch;
  std::string dsn;
  std::string connection;
  std::string language;
  std::string encoding;
  std::string quantity = "1";
  std::vector<std::string> columns;
  std::vector<std::string> failIf;
  std::vector<std::string> names;
  bool json = false;
  bool csv = false;
  bool vertical = false;
  bool noHost = false;
  bool version = false;
  bool check = false;
  bool dot = false;
  bool html = false;
};

using Report = BomRequest::Report;
struct ReportName {
  const char* name;
  Report report;
  size_t fewest; // names that it takes
  size_t most;
  const char* takes;
};
constexpr std::array kReports{
    ReportName{"tree", Report::Tree, 1, 1, "the number of a BOM"},
    ReportName{"where-used", Report::WhereUsed, 1, 1, "the number of an item"},
    ReportName{"diff", Report::Diff, 2, 2, "the numbers of two BOMs"},
    ReportName{"check", Report::Check, 0, 0, "no further names"},
    ReportName{"cost-lines", Report::CostLines, 0, 1, "the number of a BOM or nothing"},
};

NamedText SplitPair(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) throw UsageError("\"" + text + "\" is not NAME=VALUE");
  return {com::FromUtf8(text.substr(0, equals)), com::FromUtf8(text.substr(equals + 1))};
}

std::vector<NamedText> SplitPairs(const std::vector<std::string>& texts) {
  std::vector<NamedText> pairs;
  pairs.reserve(texts.size());
  for (const std::string& text : texts) pairs.push_back(SplitPair(text));
  return pairs;
}

std::vector<std::wstring> Widened(const std::vector<std::string>& texts) {
  std::vector<std::wstring> result;
  result.reserve(texts.size());
  for (const std::string& text : texts) result.push_back(com::FromUtf8(text));
  return result;
}

void AddOptions(CLI::App& app, Parsed& parsed, CommandLine& line) {
  app.set_help_flag();
  app.allow_windows_style_options(false);
  app.add_option("-h,--help", parsed.help)->expected(0, 1);
  app.add_option("--list", parsed.list)->expected(0, 1);
  app.add_flag("--check", parsed.check);
  app.add_flag("--version", parsed.version);
  CLI::Option* dsn = app.add_option("--dsn", parsed.dsn);
  app.add_option("-c,--connection", parsed.connection)->excludes(dsn);
  app.add_option("--lang", parsed.language)->check(CLI::IsMember({"chs", "cht", "en"}));
  app.add_option("--encoding", parsed.encoding)->check(CLI::IsMember({"utf-8", "gbk"}, CLI::ignore_case));
  CLI::Option* json = app.add_flag("--json", parsed.json);
  CLI::Option* csv = app.add_flag("--csv", parsed.csv)->excludes(json);
  app.add_flag("--vertical", parsed.vertical)->excludes(json)->excludes(csv);
  app.add_option("--columns", parsed.columns)->delimiter(',')->allow_extra_args(false);
  app.add_option("--fail-if", parsed.failIf)->allow_extra_args(false);
  app.add_flag("--trace", line.trace);
  app.add_flag("--no-host", parsed.noHost);
  app.add_option("--batch", parsed.batch);
  app.add_flag("--keep-going", line.keepGoing)->needs("--batch");
  app.add_option("CLASS.METHOD", parsed.target);
  app.add_option("NAME=VALUE", parsed.values);
}

void AddReports(CLI::App& bom, Parsed& parsed, BomRequest& request) {
  bom.fallthrough();
  for (const ReportName& report : kReports) {
    CLI::App* command = bom.add_subcommand(report.name);
    command->fallthrough();
    command->add_option("NUMBER", parsed.names);
    if (report.report == Report::Tree) {
      command->add_option("--depth", request.depth)->check(CLI::PositiveNumber);
      CLI::Option* dot = command->add_flag("--dot", parsed.dot);
      command->add_flag("--html", parsed.html)->excludes(dot);
    }
    if (report.report == Report::Tree || report.report == Report::CostLines)
      command->add_option("--qty", parsed.quantity);
    if (report.report == Report::WhereUsed) command->add_flag("--top", request.top);
  }
  for (CLI::App* command : bom.get_subcommands(nullptr)) command->set_help_flag();
  bom.set_help_flag();
}

BomRequest FinishedRequest(const CLI::App& bom, const Parsed& parsed, BomRequest request) {
  const auto given = std::ranges::find_if(
      kReports, [&](const ReportName& report) { return bom.got_subcommand(report.name); });
  if (given == kReports.end())
    throw UsageError("bom is followed by tree, where-used, diff, check or cost-lines");
  if (parsed.names.size() < given->fewest || parsed.names.size() > given->most)
    throw UsageError(std::string("bom ") + given->name + " takes " + given->takes);
  request.report = given->report;
  request.names = Widened(parsed.names);
  request.quantity = com::FromUtf8(parsed.quantity);
  if (parsed.dot) request.picture = BomRequest::Picture::Dot;
  if (parsed.html) request.picture = BomRequest::Picture::Html;
  return request;
}

void FinishCall(CommandLine& line, const Parsed& parsed) {
  if (parsed.target.empty()) throw UsageError("there is nothing to call");
  const size_t dot = parsed.target.find('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == parsed.target.size())
    throw UsageError("\"" + parsed.target + "\" is not CLASS.METHOD");
  line.className = com::FromUtf8(parsed.target.substr(0, dot));
  line.methodName = com::FromUtf8(parsed.target.substr(dot + 1));
  line.values = SplitPairs(parsed.values);
}

void FinishCommon(CommandLine& line, const CLI::App& app, const Parsed& parsed) {
  if (app.count("--dsn") > 0) line.descriptor = com::FromUtf8(parsed.dsn);
  line.connection = com::FromUtf8(parsed.connection);
  line.language = com::FromUtf8(parsed.language);
  line.encoding = CLI::detail::to_lower(parsed.encoding) == "gbk" ? Encoding::Gbk : Encoding::Unicode;
  if (parsed.json) line.format = Format::Json;
  if (parsed.csv) line.format = Format::Csv;
  if (parsed.vertical) line.format = Format::Vertical;
  line.columns = Widened(parsed.columns);
  line.failIf = SplitPairs(parsed.failIf);
  line.host = !parsed.noHost;
}

} // namespace

CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
  CommandLine line;
  Parsed parsed;
  CLI::App app;
  AddOptions(app, parsed, line);
  CLI::App* bom = app.add_subcommand("bom");
  AddReports(*bom, parsed, line.bom);
  // The library takes them from the end.
  std::vector<std::string> reversed;
  for (size_t i = arguments.size(); i-- > 0;) reversed.push_back(com::ToUtf8(arguments[i]));
  try {
    app.parse(std::move(reversed));
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()));
  }
  FinishCommon(line, app, parsed);
  if (app.count("--help") > 0) {
    line.action = Action::Help;
    line.helpTopic = bom->parsed() ? L"bom" : com::FromUtf8(parsed.help);
  } else if (parsed.version) {
    line.action = Action::Version;
  } else if (parsed.check) {
    line.action = Action::Check;
  } else if (app.count("--list") > 0) {
    line.action = Action::List;
    line.className = com::FromUtf8(parsed.list.empty() ? parsed.target : parsed.list);
  } else if (bom->parsed()) {
    line.action = Action::Bom;
    line.bom = FinishedRequest(*bom, parsed, std::move(line.bom));
  } else if (app.count("--batch") > 0) {
    line.action = Action::Batch;
    line.batchFile = com::FromUtf8(parsed.batch);
    if (!parsed.target.empty()) throw UsageError("--batch and a call do not go together");
  } else {
    FinishCall(line, parsed);
  }
  return line;
}

std::wstring WithLanguage(const std::wstring& descriptor, const std::wstring& language) {
  return language.empty() ? descriptor : L"Language=" + language + L";" + descriptor;
}

} // namespace bomcall
