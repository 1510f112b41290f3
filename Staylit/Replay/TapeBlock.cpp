#include "Staylit/Replay/TapeBlock.h"

#include <zlib.h>

#include <cstdint>

namespace staylit::tapeBlock {
namespace {

// A block: its length, the length of its content and the checksum over both and the compressed
// content, four bytes each with the lowest first; then the compressed content.
constexpr std::size_t kLengthOfWord = 4;
constexpr std::size_t kLengthOfHead = 3 * kLengthOfWord;
constexpr std::size_t kPlaceOfChecksum = 2 * kLengthOfWord;
constexpr unsigned kBitsOfOctet = 8;

/// The bytes of a text, as the library takes them.
const Bytef* bytesOf(std::string_view text) {
  return reinterpret_cast<const Bytef*>(text.data());
}

void putWord(std::string& bytes, std::uint32_t word) {
  for (std::size_t byte = 0; byte < kLengthOfWord; ++byte, word >>= kBitsOfOctet)
    bytes.push_back(static_cast<char>(word));
}

std::uint32_t wordAt(std::string_view bytes, std::size_t place) {
  std::uint32_t word = 0;
  for (std::size_t byte = kLengthOfWord; byte-- > 0;)
    word = (word << kBitsOfOctet) | static_cast<std::uint8_t>(bytes[place + byte]);
  return word;
}

std::uint32_t checksum(std::string_view lengths, std::string_view compressed) {
  const uLong first = crc32(0, bytesOf(lengths), static_cast<uInt>(lengths.size()));
  return static_cast<std::uint32_t>(
      crc32(first, bytesOf(compressed), static_cast<uInt>(compressed.size())));
}

std::string compressed(std::string_view content) {
  std::string bytes(compressBound(content.size()), '\0');
  uLongf length = bytes.size();
  const int result = compress2(reinterpret_cast<Bytef*>(bytes.data()), &length, bytesOf(content),
                               content.size(), Z_BEST_COMPRESSION);
  bytes.resize(result == Z_OK ? length : 0);
  return bytes;
}

}  // namespace

std::string packed(std::string_view content) {
  const std::string body = compressed(content);
  if (body.empty()) return {};
  std::string block;
  putWord(block, static_cast<std::uint32_t>(body.size()));
  putWord(block, static_cast<std::uint32_t>(content.size()));
  putWord(block, checksum(block, body));
  return block + body;
}

std::optional<std::string> takeUnpacked(std::string_view& bytes) {
  if (bytes.size() < kLengthOfHead) return std::nullopt;
  const std::size_t length = wordAt(bytes, 0);
  const std::size_t contentLength = wordAt(bytes, kLengthOfWord);
  if (length > bytes.size() - kLengthOfHead || contentLength > kCapacity) return std::nullopt;
  const std::string_view body = bytes.substr(kLengthOfHead, length);
  if (checksum(bytes.substr(0, kPlaceOfChecksum), body) != wordAt(bytes, kPlaceOfChecksum)) {
    return std::nullopt;
  }
  std::string content(contentLength, '\0');
  uLongf unpackedLength = contentLength;
  const int result =
      uncompress(reinterpret_cast<Bytef*>(content.data()), &unpackedLength, bytesOf(body), length);
  if (result != Z_OK || unpackedLength != contentLength) return std::nullopt;
  bytes.remove_prefix(kLengthOfHead + length);
  return content;
}

}  // namespace staylit::tapeBlock
