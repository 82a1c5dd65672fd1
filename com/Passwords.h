// Passwords in connection strings, which nobody is to see in a message or a trace.
#pragma once

#include <string>
#include <string_view>

namespace com {

// A connection string, or a descriptor that holds one, with "***" for the value of each PWD and Password.
std::wstring Masked(std::wstring_view connectionString);

// A message with "***" for each password of the connection string.
std::wstring WithoutPasswordsOf(std::wstring_view connectionString, std::wstring message);

} // namespace com
