#include "base/owned_fds.h"

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace host {
namespace {

constexpr int kBits = 64;
constexpr int kNoted = 1 << 20;

// One bit for each descriptor. Memory that is never touched costs addresses only.
struct OwnedFds {
    std::array<std::atomic<std::uint64_t>, kNoted / kBits> words;
    std::atomic<int> highest;
};
constinit OwnedFds owned{};

constexpr std::uint64_t BitOf(int fd) {
    return std::uint64_t{1} << (fd % kBits);
}

}  // namespace

void NoteFd(int fd) {
    if (fd < 0 || fd >= kNoted) return;
    owned.words[static_cast<std::size_t>(fd / kBits)].fetch_or(BitOf(fd));
    int highest = owned.highest.load();
    while (highest < fd && !owned.highest.compare_exchange_weak(highest, fd)) {
    }
}

void ForgetFd(int fd) {
    if (fd < 0 || fd >= kNoted) return;
    owned.words[static_cast<std::size_t>(fd / kBits)].fetch_and(~BitOf(fd));
}

std::vector<int> TakeInheritedFds() {
    std::vector<int> fds;
    for (int first = 0; first <= owned.highest; first += kBits) {
        std::uint64_t word = owned.words[static_cast<std::size_t>(first / kBits)].exchange(0);
        for (; word != 0; word &= word - 1) fds.push_back(first + std::countr_zero(word));
    }
    return fds;
}

}  // namespace host
