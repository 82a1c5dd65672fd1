#include "tsql/values/Digests.h"

#include <array>
#include <bit>
#include <cstdint>

namespace tsql {
namespace {

// The whole part of 2^32 times the sine of 1 to 64.
constexpr std::array<uint32_t, 64> kSines = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};
// The first bits of the fractions of the cube roots of the first 80 primes; SHA-256 takes the upper half of
// the first 64.
constexpr std::array<uint64_t, 80> kCubeRoots = {
    0x428A2F98D728AE22, 0x7137449123EF65CD, 0xB5C0FBCFEC4D3B2F, 0xE9B5DBA58189DBBC, 0x3956C25BF348B538,
    0x59F111F1B605D019, 0x923F82A4AF194F9B, 0xAB1C5ED5DA6D8118, 0xD807AA98A3030242, 0x12835B0145706FBE,
    0x243185BE4EE4B28C, 0x550C7DC3D5FFB4E2, 0x72BE5D74F27B896F, 0x80DEB1FE3B1696B1, 0x9BDC06A725C71235,
    0xC19BF174CF692694, 0xE49B69C19EF14AD2, 0xEFBE4786384F25E3, 0x0FC19DC68B8CD5B5, 0x240CA1CC77AC9C65,
    0x2DE92C6F592B0275, 0x4A7484AA6EA6E483, 0x5CB0A9DCBD41FBD4, 0x76F988DA831153B5, 0x983E5152EE66DFAB,
    0xA831C66D2DB43210, 0xB00327C898FB213F, 0xBF597FC7BEEF0EE4, 0xC6E00BF33DA88FC2, 0xD5A79147930AA725,
    0x06CA6351E003826F, 0x142929670A0E6E70, 0x27B70A8546D22FFC, 0x2E1B21385C26C926, 0x4D2C6DFC5AC42AED,
    0x53380D139D95B3DF, 0x650A73548BAF63DE, 0x766A0ABB3C77B2A8, 0x81C2C92E47EDAEE6, 0x92722C851482353B,
    0xA2BFE8A14CF10364, 0xA81A664BBC423001, 0xC24B8B70D0F89791, 0xC76C51A30654BE30, 0xD192E819D6EF5218,
    0xD69906245565A910, 0xF40E35855771202A, 0x106AA07032BBD1B8, 0x19A4C116B8D2D0C8, 0x1E376C085141AB53,
    0x2748774CDF8EEB99, 0x34B0BCB5E19B48A8, 0x391C0CB3C5C95A63, 0x4ED8AA4AE3418ACB, 0x5B9CCA4F7763E373,
    0x682E6FF3D6B2B8A3, 0x748F82EE5DEFB2FC, 0x78A5636F43172F60, 0x84C87814A1F0AB72, 0x8CC702081A6439EC,
    0x90BEFFFA23631E28, 0xA4506CEBDE82BDE9, 0xBEF9A3F7B2C67915, 0xC67178F2E372532B, 0xCA273ECEEA26619C,
    0xD186B8C721C0C207, 0xEADA7DD6CDE0EB1E, 0xF57D4F7FEE6ED178, 0x06F067AA72176FBA, 0x0A637DC5A2C898A6,
    0x113F9804BEF90DAE, 0x1B710B35131C471B, 0x28DB77F523047D84, 0x32CAAB7B40C72493, 0x3C9EBE0A15C9BEBC,
    0x431D67C49C100D4C, 0x4CC5D4BECB3E42B6, 0x597F299CFC657E2A, 0x5FCB6FAB3AD6FAEC, 0x6C44198C4A475817};

// What all of them do around their rounds: the bytes, a 1 bit, zeros and the number of bits, in blocks.
template <typename Word, std::endian Order, size_t Count>
class BlockDigest {
 public:
  static constexpr size_t kBlockWords = 16;
  static constexpr size_t kBlockBytes = kBlockWords * sizeof(Word);
  using State = std::array<Word, Count>;
  using Block = std::array<Word, kBlockWords>;

  template <typename Mix>
  static std::string Of(std::string_view bytes, State state, Mix mix) {
    std::string padded(bytes);
    padded += static_cast<char>(0x80);
    // The number has as many bytes as two words; that of more than 2^64 bits is no text's.
    while ((padded.size() + 2 * sizeof(Word)) % kBlockBytes != 0) padded += '\0';
    padded.append(2 * sizeof(Word) - sizeof(uint64_t), '\0');
    Append(padded, static_cast<uint64_t>(bytes.size()) * 8);
    for (size_t at = 0; at < padded.size(); at += kBlockBytes) {
      Block block{};
      for (size_t i = 0; i < kBlockWords; ++i) block[i] = WordAt(padded, at + i * sizeof(Word));
      State mixed = state;
      mix(mixed, block);
      for (size_t i = 0; i < Count; ++i) state[i] += mixed[i];
    }
    std::string digest;
    for (const Word word : state) Append(digest, word);
    return digest;
  }

 private:
  template <typename Number>
  static unsigned ShiftOf(size_t byte) {
    return static_cast<unsigned>(8 * (Order == std::endian::big ? sizeof(Number) - 1 - byte : byte));
  }
  template <typename Number>
  static void Append(std::string& bytes, Number number) {
    for (size_t i = 0; i < sizeof(Number); ++i)
      bytes += static_cast<char>(static_cast<unsigned char>(number >> ShiftOf<Number>(i) & 0xFFU));
  }
  static Word WordAt(const std::string& bytes, size_t at) {
    Word word = 0;
    for (size_t i = 0; i < sizeof(Word); ++i)
      word |= static_cast<Word>(static_cast<unsigned char>(bytes[at + i])) << ShiftOf<Word>(i);
    return word;
  }
};

using Digest5 = BlockDigest<uint32_t, std::endian::little, 4>;
using Digest1 = BlockDigest<uint32_t, std::endian::big, 5>;

void MixMd5(Digest5::State& state, const Digest5::Block& block) {
  constexpr std::array<std::array<int, 4>, 4> kTurns = {
      {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};
  auto& [a, b, c, d] = state;
  for (size_t i = 0; i < kSines.size(); ++i) {
    uint32_t mixed = 0;
    size_t word = 0;
    switch (i / 16) {
    case 0:
      mixed = (b & c) | (~b & d);
      word = i;
      break;
    case 1:
      mixed = (d & b) | (~d & c);
      word = 5 * i + 1;
      break;
    case 2:
      mixed = b ^ c ^ d;
      word = 3 * i + 5;
      break;
    default: mixed = c ^ (b | ~d); word = 7 * i;
    }
    const uint32_t sum = a + mixed + kSines[i] + block[word % 16];
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kTurns[i / 16][i % 4]);
  }
}

void MixSha1(Digest1::State& state, const Digest1::Block& block) {
  constexpr size_t kRounds = 80;
  std::array<uint32_t, kRounds> words{};
  for (size_t i = 0; i < kRounds; ++i)
    words[i] = i < block.size() ? block[i]
                                : std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
  auto& [a, b, c, d, e] = state;
  for (size_t i = 0; i < kRounds; ++i) {
    uint32_t mixed = 0;
    switch (i / 20) {
    case 0: mixed = ((b & c) | (~b & d)) + 0x5A827999; break;
    case 1: mixed = (b ^ c ^ d) + 0x6ED9EBA1; break;
    case 2: mixed = ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDC; break;
    default: mixed = (b ^ c ^ d) + 0xCA62C1D6;
    }
    const uint32_t next = std::rotl(a, 5) + mixed + e + words[i];
    e = d;
    d = c;
    c = std::rotl(b, 30);
    b = a;
    a = next;
  }
}

// How far the two of SHA-2 turn and shift.
struct Turns {
  int a, b, c;      // of the first word of the state
  int e, f, g;      // of the fifth
  int s, t, shiftS; // of a word far back
  int u, v, shiftU; // of one near
};
constexpr Turns kTurns256 = {2, 13, 22, 6, 11, 25, 7, 18, 3, 17, 19, 10};
constexpr Turns kTurns512 = {28, 34, 39, 14, 18, 41, 1, 8, 7, 19, 61, 6};

template <typename Word, size_t Rounds>
void MixSha2(std::array<Word, 8>& state, const std::array<Word, 16>& block, const Turns& turns) {
  constexpr unsigned kDropped = 64 - 8 * sizeof(Word); // bits of the constants
  std::array<Word, Rounds> words{};
  for (size_t i = 0; i < Rounds; ++i) {
    if (i < block.size()) {
      words[i] = block[i];
      continue;
    }
    const Word far = words[i - 15];
    const Word near = words[i - 2];
    words[i] = words[i - 16] + (std::rotr(far, turns.s) ^ std::rotr(far, turns.t) ^ (far >> turns.shiftS)) +
               words[i - 7] + (std::rotr(near, turns.u) ^ std::rotr(near, turns.v) ^ (near >> turns.shiftU));
  }
  auto& [a, b, c, d, e, f, g, h] = state;
  for (size_t i = 0; i < Rounds; ++i) {
    const Word first = h + (std::rotr(e, turns.e) ^ std::rotr(e, turns.f) ^ std::rotr(e, turns.g)) +
                       ((e & f) ^ (~e & g)) + static_cast<Word>(kCubeRoots[i] >> kDropped) + words[i];
    const Word second = (std::rotr(a, turns.a) ^ std::rotr(a, turns.b) ^ std::rotr(a, turns.c)) +
                        ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
}

} // namespace

std::string Md5(std::string_view bytes) {
  return Digest5::Of(bytes, {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476}, MixMd5);
}

std::string Sha1(std::string_view bytes) {
  return Digest1::Of(bytes, {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0}, MixSha1);
}

// They begin with the first bits of the fractions of the square roots of the first primes.
std::string Sha256(std::string_view bytes) {
  return BlockDigest<uint32_t, std::endian::big, 8>::Of(
      bytes, {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19},
      [](auto& state, const auto& block) { MixSha2<uint32_t, 64>(state, block, kTurns256); });
}

std::string Sha512(std::string_view bytes) {
  return BlockDigest<uint64_t, std::endian::big, 8>::Of(
      bytes,
      {0x6A09E667F3BCC908, 0xBB67AE8584CAA73B, 0x3C6EF372FE94F82B, 0xA54FF53A5F1D36F1, 0x510E527FADE682D1,
       0x9B05688C2B3E6C1F, 0x1F83D9ABFB41BD6B, 0x5BE0CD19137E2179},
      [](auto& state, const auto& block) { MixSha2<uint64_t, 80>(state, block, kTurns512); });
}

} // namespace tsql
