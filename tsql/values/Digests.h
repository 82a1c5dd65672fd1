// Digests of bytes: MD5 (RFC 1321), SHA-1, SHA-256 and SHA-512 (FIPS 180-4).
#pragma once

#include <string>
#include <string_view>

namespace tsql {

std::string Md5(std::string_view bytes);
std::string Sha1(std::string_view bytes);
std::string Sha256(std::string_view bytes);
std::string Sha512(std::string_view bytes);

} // namespace tsql
