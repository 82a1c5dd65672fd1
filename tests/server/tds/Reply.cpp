#include "tests/server/tds/Reply.h"

#include <string>
#include <utility>

#include "tests/server/tds/WireValue.h"

namespace tds {
namespace {

enum Token : uint8_t {
  kReturnStatus = 0x79,
  kColumns = 0x81,
  kError = 0xAA,
  kInformation = 0xAB,
  kReturnValue = 0xAC,
  kLoginAccepted = 0xAD,
  kRow = 0xD1,
  kChange = 0xE3,
};

enum DoneStatus : uint16_t { kMore = 1, kFailed = 2, kCounted = 16, kAttention = 32 };

enum Change : uint8_t {
  kDatabase = 1,
  kPacketSize = 4,
  kCollation = 7,
  kBegun = 8,
  kCommitted = 9,
  kRolledBack = 10,
};

// What drivers ask for when they want to know what a server can do.
constexpr char kProduct[] = "Microsoft SQL Server";
constexpr std::string_view kProductVersion{"\x0B\x00\x0B\xB8", 4}; // 11.0.3000
constexpr char kServerName[] = "tds_server";
constexpr uint16_t kNullable = 1;

void PutToken(ByteWriter& out, Token token) {
  out.Put(static_cast<uint8_t>(token));
}

// A token that says behind its name how long it is.
std::string Sized(Token token, const ByteWriter& content) {
  ByteWriter out;
  PutToken(out, token);
  out.Put(static_cast<uint16_t>(content.data().size()));
  out.PutBytes(content.data());
  return out.data();
}

std::string Changed(Change change, const ByteWriter& values) {
  ByteWriter content;
  content.Put(static_cast<uint8_t>(change));
  content.PutBytes(values.data());
  return Sized(kChange, content);
}

std::string_view BytesOf(const uint64_t& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

void PutShortBytes(ByteWriter& out, std::string_view bytes) {
  out.Put(static_cast<uint8_t>(bytes.size()));
  out.PutBytes(bytes);
}

} // namespace

void Reply::Write(std::string_view token) {
  WritePending(true);
  stream_.Write(token);
}

void Reply::WritePending(bool hasMore) {
  if (!pending_) return;
  const Pending done = *std::exchange(pending_, std::nullopt);
  ByteWriter out;
  out.Put(static_cast<uint8_t>(done.what));
  out.Put(static_cast<uint16_t>(done.status | (hasMore ? kMore : 0)));
  out.Put(uint16_t{0}); // the statement's kind, which nobody asks
  out.Put(done.count);
  stream_.Write(out.data());
}

void Reply::Columns(std::span<const tsql::Column> columns) {
  ByteWriter out;
  PutToken(out, kColumns);
  out.Put(static_cast<uint16_t>(columns.size()));
  for (const tsql::Column& column : columns) {
    out.Put(uint32_t{0}); // the user's type
    out.Put(static_cast<uint16_t>(column.nullable ? kNullable : 0));
    PutType(out, column.type);
    if (HasTableName(column.type)) {
      out.Put(uint8_t{1});
      out.PutLongText("");
    }
    out.PutShortText(column.name);
  }
  Write(out.data());
}

void Reply::Row(std::span<const tsql::Column> columns, std::span<const tsql::Value> values) {
  ByteWriter out;
  PutToken(out, kRow);
  for (size_t i = 0; i < columns.size(); ++i) PutValue(out, columns[i].type, values[i]);
  Write(out.data());
}

void Reply::Say(const tsql::Error& error) {
  constexpr int kMostOfInformation = 10;
  ByteWriter content;
  content.Put(static_cast<int32_t>(error.number));
  content.Put(static_cast<uint8_t>(error.state));
  content.Put(static_cast<uint8_t>(error.severity));
  content.PutLongText(error.what());
  content.PutShortText(kServerName);
  content.PutShortText(""); // the procedure, of which the engine does not tell
  content.Put(static_cast<int32_t>(error.line));
  Write(Sized(error.severity <= kMostOfInformation ? kInformation : kError, content));
}

void Reply::End(Ended what, std::optional<int64_t> count, bool failed) {
  WritePending(true);
  pending_ = {what, static_cast<uint16_t>((count ? kCounted : 0) | (failed ? kFailed : 0)),
              count.value_or(0)};
}

void Reply::Finish(Ended what, bool failed) {
  if (!pending_ || pending_->what != what) End(what, std::nullopt, failed);
  Flush();
}

void Reply::FinishAttention() {
  pending_ = {Ended::Batch, kAttention, 0};
  Flush();
}

void Reply::Flush() {
  WritePending(false);
  stream_.EndReply();
}

void Reply::ReturnStatus(int32_t status) {
  ByteWriter out;
  PutToken(out, kReturnStatus);
  out.Put(status);
  Write(out.data());
}

void Reply::ReturnValue(size_t ordinal, const tsql::Parameter& parameter) {
  constexpr uint8_t kOutputParameter = 1;
  ByteWriter out;
  PutToken(out, kReturnValue);
  out.Put(static_cast<uint16_t>(ordinal));
  out.PutShortText(parameter.name);
  out.Put(kOutputParameter);
  out.Put(uint32_t{0});
  out.Put(kNullable);
  PutType(out, parameter.type);
  PutValue(out, parameter.type, parameter.value);
  Write(out.data());
}

void Reply::DatabaseChanged(std::string_view database) {
  ByteWriter values;
  values.PutShortText(database);
  values.PutShortText("master");
  Write(Changed(kDatabase, values));
}

void Reply::CollationChanged() {
  ByteWriter values;
  PutShortBytes(values, kCollationBytes);
  PutShortBytes(values, "");
  Write(Changed(kCollation, values));
}

void Reply::PacketSizeChanged(size_t size, size_t before) {
  ByteWriter values;
  values.PutShortText(std::to_string(size));
  values.PutShortText(std::to_string(before));
  Write(Changed(kPacketSize, values));
}

void Reply::TransactionBegan(uint64_t transaction) {
  ByteWriter values;
  PutShortBytes(values, BytesOf(transaction));
  PutShortBytes(values, "");
  Write(Changed(kBegun, values));
}

void Reply::TransactionEnded(uint64_t transaction, bool committed) {
  ByteWriter values;
  PutShortBytes(values, "");
  PutShortBytes(values, BytesOf(transaction));
  Write(Changed(committed ? kCommitted : kRolledBack, values));
}

void Reply::LoginAccepted(uint32_t version) {
  constexpr uint8_t kTransactSql = 1;
  ByteWriter content;
  content.Put(kTransactSql);
  // This number has its high byte first.
  content.Put(__builtin_bswap32(version));
  content.PutShortText(kProduct);
  content.PutBytes(kProductVersion);
  Write(Sized(kLoginAccepted, content));
}

} // namespace tds
