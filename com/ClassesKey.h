// What registration reads and writes below Software\Classes of a root (the machine's or the user's registry).
// Keys are named relative to it.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace com {

// What programs of this width see, and what those of the other width see: each has classes and interfaces of
// its own, ProgIDs and type libraries are common to both.
constexpr REGSAM kOwnView = 0;
constexpr REGSAM kOtherView = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

// A key that is open for reading; null when it is not there.
class ClassesKey {
 public:
  ClassesKey(HKEY root, const std::wstring& key, REGSAM view);
  ~ClassesKey();
  ClassesKey(const ClassesKey&) = delete;
  ClassesKey& operator=(const ClassesKey&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }

  // A value's name is null for the default value. Nothing where there is no text of that name.
  std::optional<std::wstring> Text(const wchar_t* name) const;
  std::vector<std::wstring> Subkeys() const;
  // Where the key really is, whichever view it was opened through.
  std::wstring Place() const;

 private:
  HKEY handle_ = nullptr;
};

// Whether the programs of the other width have no such key of their own, and so may see this one.
bool IsShared(HKEY root, const std::wstring& key);

// Removes keys of the own view and remembers the first failure; what is not there is none.
class ClassesRemoval {
 public:
  explicit ClassesRemoval(HKEY root) : root_(root) {}
  LSTATUS status() const { return status_; }

  void Tree(const std::wstring& key);
  // Only when nothing is below it.
  void Empty(const std::wstring& key);

 private:
  void Note(LSTATUS status);

  HKEY root_;
  LSTATUS status_ = ERROR_SUCCESS;
};

// A text value of a key.
struct ClassesValue {
  std::wstring key;
  const wchar_t* name; // null is the key's default value
  std::wstring text;
};

// Writes values into the own view and can take all of it back: then what was there before is there again.
class ClassesWriting {
 public:
  explicit ClassesWriting(HKEY root) : root_(root) {}

  LSTATUS Write(const ClassesValue& value);
  void TakeBack();

 private:
  struct Written {
    std::wstring key;
    const wchar_t* name;
    std::wstring created; // the topmost key that was not there
    std::optional<std::wstring> old;
  };

  LSTATUS Set(const std::wstring& key, const wchar_t* name, const std::wstring& text) const;

  HKEY root_;
  std::vector<Written> written_;
};

} // namespace com
