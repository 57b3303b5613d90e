// A hash of texts with a key that nobody outside the process knows. A dump chooses its identifier
// codes and names, and could choose them so that all fall into one bucket of a table whose hash is
// known; with a secret key it cannot.
#ifndef KESNCD_TEXT_SECRET_HASH_H_
#define KESNCD_TEXT_SECRET_HASH_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orsa::kesncd {

/// The 128 bits of a key.
struct SecretKey {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
};

/// The key of this process, drawn once. It differs from run to run, and with it the order of a hash
/// table's entries: nothing that is written may depend on that.
const SecretKey& ProcessKey();

/// SipHash-1-3 of a text under a key.
std::uint64_t KeyedHash(std::string_view text, const SecretKey& key);

/// The hash of a text under the key of this process.
inline std::uint64_t SecretHash(std::string_view text) {
  return KeyedHash(text, ProcessKey());
}

/// The same for the standard library's tables, which may then be asked by any kind of text. With
/// std::equal_to<> beside it a std::string key is found by a std::string_view, without a copy.
struct SecretTextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return static_cast<std::size_t>(SecretHash(text));
  }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_SECRET_HASH_H_
