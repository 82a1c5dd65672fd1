#include "tests/server/tds/Login.h"

#include "tests/server/tds/Bytes.h"

namespace tds {
namespace {

// A text elsewhere in the message, by its place and length at the reader's position.
std::string_view TakeReference(ByteReader& in, std::string_view message) {
  const auto offset = in.Take<uint16_t>();
  const size_t size = in.Take<uint16_t>() * size_t{2};
  if (offset > message.size() || size > message.size() - offset)
    throw Malformed("a login names what it has not");
  return message.substr(offset, size);
}

// The halves of each byte change places, and half of the bits are turned over.
std::string Plain(std::string_view password) {
  constexpr unsigned kTurned = 0xA5;
  std::string plain;
  for (const char byte : password) {
    const unsigned bits = static_cast<uint8_t>(byte) ^ kTurned;
    plain += static_cast<char>(bits << 4 | bits >> 4);
  }
  return plain;
}

} // namespace

Login ReadLogin(std::string_view message) {
  ByteReader in(message);
  Login login;
  in.Take<uint32_t>(); // the message's length
  login.version = in.Take<uint32_t>();
  login.packetSize = in.Take<uint32_t>();
  // The client's version, process and connection, its options, its time zone and language.
  constexpr size_t kUnused = 24;
  in.Bytes(kUnused);
  const auto text = [&] { return tsql::TextOfBytes(TakeReference(in, message), true); };
  text(); // the client's machine
  login.user = text();
  login.password = tsql::TextOfBytes(Plain(TakeReference(in, message)), true);
  // The program, the server, an extension, the driver, the language.
  for (int i = 0; i < 5; ++i) in.Take<uint32_t>();
  login.database = text();
  return login;
}

std::string AnswerToPreLogin() {
  enum Option : uint8_t { kVersion = 0, kEncryption = 1, kEnd = 0xFF };
  constexpr uint8_t kNoEncryption = 2;
  constexpr std::string_view kServerVersion{"\x0B\x00\x0B\xB8\x00\x00", 6};
  constexpr uint16_t kFirst = 11; // behind two options and the end of them
  ByteWriter out;
  const auto option = [&](Option name, uint16_t offset, uint16_t size) {
    out.Put(static_cast<uint8_t>(name));
    // These numbers have their high byte first.
    out.Put(__builtin_bswap16(offset));
    out.Put(__builtin_bswap16(size));
  };
  option(kVersion, kFirst, kServerVersion.size());
  option(kEncryption, kFirst + kServerVersion.size(), 1);
  out.Put(static_cast<uint8_t>(kEnd));
  out.PutBytes(kServerVersion);
  out.Put(kNoEncryption);
  return out.data();
}

} // namespace tds
