// Reply: the tokens that a server answers with, on their way into a connection.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "tests/server/tds/PacketStream.h"
#include "tsql/tsql.h"

namespace tds {

// What a token says has ended.
enum class Ended : uint8_t { Batch = 0xFD, Procedure = 0xFE, StatementOfProcedure = 0xFF };

class Reply {
 public:
  explicit Reply(PacketStream& stream) : stream_(stream) {}
  Reply(const Reply&) = delete;
  Reply& operator=(const Reply&) = delete;

  void Columns(std::span<const tsql::Column> columns);
  void Row(std::span<const tsql::Column> columns, std::span<const tsql::Value> values);
  // An error, or information when its severity is at most 10.
  void Say(const tsql::Error& error);

  // Something has ended, perhaps with a count of rows. Whether it was the last is known only later, so the
  // token is kept back until then.
  void End(Ended what, std::optional<int64_t> count, bool failed);
  // All has ended. A client is always told so by a token of its own, or by the one that was kept back.
  void Finish(Ended what, bool failed);
  // Sends what there is. Something has ended last.
  void Flush();
  // The running batch has ended because the client wanted it.
  void FinishAttention();

  void ReturnStatus(int32_t status);
  void ReturnValue(size_t ordinal, const tsql::Parameter& parameter);

  void DatabaseChanged(std::string_view database);
  void CollationChanged();
  void PacketSizeChanged(size_t size, size_t before);
  void TransactionBegan(uint64_t transaction);
  void TransactionEnded(uint64_t transaction, bool committed);
  void LoginAccepted(uint32_t version);

 private:
  struct Pending {
    Ended what;
    uint16_t status;
    int64_t count;
  };
  void Write(std::string_view token);
  void WritePending(bool hasMore);

  PacketStream& stream_;
  std::optional<Pending> pending_;
};

} // namespace tds
