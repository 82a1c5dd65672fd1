// ShellTarget: what the shells run their batches on: a database of the engine, or a server elsewhere.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tsql/tsql.h"

namespace tsql {

class ShellTarget {
 public:
  virtual ~ShellTarget() = default;
  // False when any statement of the batch failed.
  virtual bool Execute(std::string_view batch, ResultSink& sink) = 0;
  // Whether nobody wants the row count of a result. A server elsewhere is not asked: it counts.
  virtual bool NoCount() const = 0;
};

// A shell's DATABASE may be a descriptor, key=value pairs with the provider first. Then the engine's file is
// its data source, and everything but the engine is a server.
inline std::string FileOf(const std::string& database) {
  constexpr std::string_view kEmbedded = "Provider=Embedded;Data Source=";
  if (!database.starts_with(kEmbedded)) return database;
  return database.substr(kEmbedded.size(), database.find(';', kEmbedded.size()) - kEmbedded.size());
}
inline bool IsServer(const std::string& database) {
  return FileOf(database) == database && database.starts_with("Provider=");
}

// The server of a descriptor. Each program that has a shell brings this along with it: those for Windows
// reach servers through ODBC, the others refuse. Throws Error.
std::unique_ptr<ShellTarget> OpenServer(const std::string& descriptor);

} // namespace tsql
