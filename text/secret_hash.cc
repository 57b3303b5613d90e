// SipHash-1-3: one round for each eight bytes, three at the end. Fast enough for every name of a
// dump, and whoever writes a dump cannot choose texts that collide.
#include "text/secret_hash.h"

#include <sys/random.h>

#include <chrono>

#include "text/number.h"

namespace orsa::kesncd {

namespace {

/// The four words of the hash and what is done to them for each block. The numbers are SipHash's.
struct SipState {
  std::uint64_t a, b, c, d;

  void Round() {
    a += b;
    c += d;
    b = std::rotl(b, 13) ^ a;
    d = std::rotl(d, 16) ^ c;
    a = std::rotl(a, 32);
    c += b;
    a += d;
    b = std::rotl(b, 17) ^ c;
    d = std::rotl(d, 21) ^ a;
    c = std::rotl(c, 32);
  }

  // A block enters one word before its round and another one after it.
  void Take(std::uint64_t block) {
    d ^= block;
    Round();
    a ^= block;
  }
};

/// Never waits: a program started at boot must not hang for a hash.
SecretKey DrawKey() {
  SecretKey key;
  if (getrandom(&key, sizeof key, GRND_NONBLOCK) == sizeof key) return key;
  // An early boot or a sandbox gives no random bytes: addresses and the clock are hard to guess.
  static const int anchor = 0;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  key.low = reinterpret_cast<std::uintptr_t>(&anchor) * 0x9E3779B97F4A7C15U;
  key.high = static_cast<std::uint64_t>(now) * 0xD6E8FEB86659FD93U ^
             reinterpret_cast<std::uintptr_t>(&key);
  return key;
}

}  // namespace

const SecretKey& ProcessKey() {
  static const SecretKey key = DrawKey();
  return key;
}

std::uint64_t KeyedHash(std::string_view text, const SecretKey& key) {
  // The constants spell SipHash's text "somepseudorandomlygeneratedbytes".
  SipState state{key.low ^ 0x736F6D6570736575U, key.high ^ 0x646F72616E646F6DU,
                 key.low ^ 0x6C7967656E657261U, key.high ^ 0x7465646279746573U};
  constexpr std::size_t kBlock = sizeof(std::uint64_t);
  const std::size_t whole = text.size() / kBlock * kBlock;
  for (std::size_t at = 0; at < whole; at += kBlock) {
    state.Take(LoadBytes<std::uint64_t>(text.data() + at));
  }
  const std::uint64_t rest = LoadBytes<std::uint64_t>(text.data() + whole, text.size() - whole);
  // The length in the highest byte keeps texts apart that differ in NUL bytes at the end only.
  state.Take(rest | static_cast<std::uint64_t>(text.size()) << 56);
  state.c ^= 0xFF;
  for (int i = 0; i < 3; ++i) state.Round();
  return state.a ^ state.b ^ state.c ^ state.d;
}

}  // namespace orsa::kesncd
