#include <oleauto.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

#include "cli/Json.h"
#include "cli/Number.h"
#include "cli/Objects.h"
#include "com/Text.h"

namespace bomcall {
namespace {

using com::Object;
using com::Variant;

constexpr size_t kDeepest = 500;

// Goes through a text and leaves behind how far it was read.
class TrackedChar {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TrackedChar(const char* at, const char** read) : at_(at), read_(read) {}
  const char& operator*() const { return *at_; }
  TrackedChar& operator++() {
    *read_ = ++at_;
    return *this;
  }
  bool operator==(const TrackedChar& other) const { return at_ == other.at_; }
  bool operator!=(const TrackedChar& other) const { return at_ != other.at_; }

 private:
  const char* at_;
  const char** read_;
};

// Builds the value while the parser reads.
class Builder {
 public:
  explicit Builder(const std::string& text) : begin_(text.data()), read_(text.data()) {}
  const char** read() { return &read_; }
  Variant Take() { return std::move(result_); }

  bool null() { return Add(Variant::Null()); }
  bool boolean(bool value) { return Add(value); }
  bool number_integer(int64_t value) { return Add(Whole(value)); }
  bool number_unsigned(uint64_t value) {
    if (value <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
      return number_integer(static_cast<int64_t>(value));
    return Add(*ParseDecimal(std::to_string(value)));
  }
  bool number_float(double value, const std::string& text) {
    if (text.find_first_of(".eE") == std::string::npos) RefuseNumber(text, " has more than 64 bits");
    if (text.find_first_of("eE") != std::string::npos) {
      const std::string digits = text.substr(0, text.find_first_of("eE"));
      if (value == 0 && digits.find_first_not_of("-0.") != std::string::npos)
        RefuseNumber(text, " is too small");
      return Add(value);
    }
    const auto decimal = ParseDecimal(text);
    if (!decimal) RefuseNumber(text, " has more digits than a decimal holds");
    return Add(*decimal);
  }
  bool string(std::string& text) { return Add(Variant(com::FromUtf8(text))); }
  bool binary(std::vector<uint8_t>& /*never in a text*/) { return false; }
  bool start_object(size_t /*unknown*/) { return Open(L"ruvo10.Dictionary"); }
  bool start_array(size_t /*unknown*/) { return Open(L"ruvo10.Vector"); }
  bool key(std::string& name) {
    open_.back().key = com::FromUtf8(name);
    return true;
  }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }

  bool parse_error(size_t position, const std::string& token, const nlohmann::json::exception& error) {
    if (error.id == 406) RefuseNumber(token, " is too great");
    std::string text = error.what();
    // The library's own name of the error and its place go; the place is told in front, as with every error.
    const size_t reason = text.find(": ");
    if (reason != std::string::npos) text.erase(0, reason + 2);
    throw JsonError(JsonError::Reason::Syntax, Place(begin_ + position) + text);
  }

 private:
  struct Container {
    Object object;
    bool isObject;
    std::wstring key;
  };

  static Variant Whole(int64_t value) {
    if (value >= std::numeric_limits<int32_t>::min() && value <= std::numeric_limits<int32_t>::max())
      return static_cast<int32_t>(value);
    Variant result;
    result.raw().vt = VT_I8;
    result.raw().llVal = value;
    return result;
  }

  bool Add(const Variant& value) {
    if (open_.empty())
      result_ = value;
    else if (open_.back().isObject)
      open_.back().object.Put(L"Value", open_.back().key, value);
    else
      open_.back().object.Call(L"Add", value);
    return true;
  }
  bool Open(const wchar_t* progId) {
    if (open_.size() >= kDeepest)
      Refuse("more than " + std::to_string(kDeepest) + " objects and arrays inside each other");
    open_.push_back({CreateObject(progId), progId == std::wstring_view(L"ruvo10.Dictionary"), {}});
    return true;
  }
  bool Close() {
    const Variant done(open_.back().object);
    open_.pop_back();
    return Add(done);
  }

  [[noreturn]] void Refuse(const std::string& why) const {
    throw JsonError(JsonError::Reason::Value, Place(read_) + why);
  }
  // A number is known to end when the character behind it is read, or the text's end.
  [[noreturn]] void RefuseNumber(const std::string& number, const std::string& why) const {
    const bool isBehind = read_[-1] < '0' || read_[-1] > '9';
    throw JsonError(JsonError::Reason::Value,
                    Place(isBehind ? read_ - 1 : read_) + "the number " + number + why);
  }
  // In front of an error: where the character before `at` stands.
  std::string Place(const char* at) const {
    const auto line = 1 + std::count(begin_, at, '\n');
    const std::string_view before(begin_, static_cast<size_t>(at - begin_));
    const size_t lineBegin = before.rfind('\n') + 1;
    return "line " + std::to_string(line) + ", column " +
           std::to_string(std::max<size_t>(1, before.size() - lineBegin)) + ": ";
  }

  const char* begin_;
  const char* read_;
  std::vector<Container> open_;
  Variant result_;
};

} // namespace

Variant ReadJson(const std::string& utf8) {
  Builder builder(utf8);
  const char* end = utf8.data() + utf8.size();
  nlohmann::json::sax_parse(TrackedChar(utf8.data(), builder.read()), TrackedChar(end, builder.read()),
                            &builder);
  return builder.Take();
}

} // namespace bomcall
