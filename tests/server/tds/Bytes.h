// Bytes of the protocol: numbers with their low byte first, texts in UTF-16 with the low byte first.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "tsql/values/CodePage.h"

namespace tds {

// Thrown for a message that breaks the protocol. Its connection is closed.
struct Malformed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads a message from its front. Every reading past the end throws Malformed.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  bool IsAtEnd() const { return rest_.empty(); }
  uint8_t Peek() const {
    if (rest_.empty()) throw Malformed("a message ends too early");
    return static_cast<uint8_t>(rest_.front());
  }

  std::string_view Bytes(size_t count) {
    if (count > rest_.size()) throw Malformed("a message ends too early");
    const std::string_view bytes = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return bytes;
  }
  std::string_view Rest() { return Bytes(rest_.size()); }

  template <typename Number>
  Number Take() {
    static_assert(std::is_arithmetic_v<Number>);
    Number number;
    std::memcpy(&number, Bytes(sizeof number).data(), sizeof number);
    return number;
  }

  // As many units of UTF-16, as UTF-8.
  std::string Text(size_t units) { return tsql::TextOfBytes(Bytes(units * 2), true); }
  // A text behind its length in one byte.
  std::string ShortText() { return Text(Take<uint8_t>()); }
  // The same where the length is in bytes.
  std::string ShortBytes() { return tsql::TextOfBytes(Bytes(Take<uint8_t>()), true); }

 private:
  std::string_view rest_;
};

class ByteWriter {
 public:
  template <typename Number>
  void Put(Number number) {
    static_assert(std::is_arithmetic_v<Number>);
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    data_.append(bytes, sizeof number);
  }
  void PutBytes(std::string_view bytes) { data_ += bytes; }

  // A text of UTF-8 as UTF-16 behind its length in units, which takes one byte or two. What does not fit is
  // cut.
  void PutShortText(std::string_view text) { PutText<uint8_t>(text, UINT8_MAX); }
  void PutLongText(std::string_view text) { PutText<uint16_t>(text, kLongestMessage); }

  const std::string& data() const { return data_; }

 private:
  // A server's messages are not longer.
  static constexpr size_t kLongestMessage = 2047;

  template <typename Length>
  void PutText(std::string_view text, size_t most) {
    std::string units = tsql::BytesOfText(text, true);
    if (units.size() > most * 2) units.resize(most * 2);
    Put(static_cast<Length>(units.size() / 2));
    data_ += units;
  }

  std::string data_;
};

} // namespace tds
