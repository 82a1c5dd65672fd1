// Login: what a client says of itself when it connects.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tds {

struct Login {
  uint32_t version; // of the protocol
  uint32_t packetSize;
  std::string user;
  std::string password;
  std::string database;
};

// Reads the message of a login. Throws Malformed.
Login ReadLogin(std::string_view message);

// The answer to what a client asks before it logs in: the connection is not encrypted, and there is nothing
// else that the server has.
std::string AnswerToPreLogin();

} // namespace tds
