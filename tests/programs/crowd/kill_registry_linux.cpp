// kill-registry: kills a process KILLS times at random moments while it writes a value
// of the registry of this host, beside another process that writes one. Afterwards the value must
// be the old or the new one, whole. The other values must be unchanged, no file may be left, and no
// process may stay locked out.
#include <qv_host.h>
#include <windows.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <random>
#include <vector>

#include "processes.h"
#include "verbs.h"

namespace {

using namespace stress;

constexpr std::uint32_t kBystanders = 10;

struct TNumbers {
    std::atomic<std::uint32_t> started{0};
    std::atomic<std::uint32_t> written{0};
};

struct TShared {
    std::atomic<bool> stop{false};
    std::atomic<std::uint32_t> ready{0};
    TNumbers victim;
    TNumbers other;
};

// The value that is written in the how-manyth place; every byte depends on the number.
std::vector<BYTE> ValueOf(std::uint32_t number) {
    std::vector<BYTE> bytes(20 + number % 1000);
    std::minstd_rand random(number + 1);
    for (BYTE& byte : bytes) byte = static_cast<BYTE>(random() >> 8);
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

class TKey {
  public:
    TKey() {
        if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, TEXT("Software\\Halvorn\\Vantrel"), 0, nullptr, 0,
                            KEY_ALL_ACCESS, nullptr, &key_, nullptr) != ERROR_SUCCESS) {
            Fail("the key does not open");
        }
    }
    TKey(const TKey&) = delete;
    TKey& operator=(const TKey&) = delete;
    ~TKey() { RegCloseKey(key_); }

    void Write(const std::basic_string<WCHAR>& name, std::uint32_t number) {
        const std::vector<BYTE> value = ValueOf(number);
        if (RegSetValueExW(key_, name.c_str(), 0, REG_BINARY, value.data(),
                           static_cast<DWORD>(value.size())) != ERROR_SUCCESS) {
            Fail("a value cannot be written");
        }
    }

    std::uint32_t Read(const std::basic_string<WCHAR>& name) {
        std::vector<BYTE> value(8192);
        auto size = static_cast<DWORD>(value.size());
        DWORD type = 0;
        if (RegQueryValueExW(key_, name.c_str(), nullptr, &type, value.data(), &size) !=
            ERROR_SUCCESS) {
            Fail("a value cannot be read");
        }
        value.resize(size);
        std::uint32_t number = 0;
        if (size >= sizeof(number)) std::memcpy(&number, value.data(), sizeof(number));
        if (type != REG_BINARY || value != ValueOf(number)) Fail("a value is torn");
        return number;
    }

  private:
    HKEY key_ = nullptr;
};

std::basic_string<WCHAR> Bystander(std::uint32_t i) {
    std::basic_string<WCHAR> name = TEXT("bystander ");
    for (const char c : std::to_string(i)) name += static_cast<WCHAR>(c);
    return name;
}

class TCampaign {
  public:
    explicit TCampaign(std::uint32_t kills) : kills_(kills) {}

    void Run() {
        for (std::uint32_t i = 0; i < kBystanders; ++i) key_.Write(Bystander(i), i);
        key_.Write(kVictim, 0);
        key_.Write(kOther, 0);
        const pid_t other = Start([this] {
            TKey key;
            WriteOn(key, kOther, shared_->other, [this] {
                SleepFor(2000);
                return !shared_->stop;
            });
        });
        for (std::uint32_t life = 0; life < kills_; ++life) {
            KillOne(life);
            if (!AllLive()) Fail("the other writer ended");
        }
        shared_->stop = true;
        if (!EndsWell(other)) Fail("the other writer failed");
        Report();
    }

  private:
    static constexpr const WCHAR* kVictim = TEXT("of those that are killed");
    static constexpr const WCHAR* kOther = TEXT("of the other");

    template <class Goes>
    static void WriteOn(TKey& key, const WCHAR* name, TNumbers& numbers, const Goes& goes_on) {
        while (goes_on()) {
            const std::uint32_t number = numbers.written + 1;
            numbers.started = number;
            key.Write(name, number);
            numbers.written = number;
        }
    }

    void KillOne(std::uint32_t life) {
        TNumbers& mine = shared_->victim;
        const pid_t victim = Start([&] {
            TKey key;
            shared_->ready = life + 1;
            WriteOn(key, kVictim, mine, [] { return true; });
        });
        WaitUntil([&] { return shared_->ready == life + 1; }, "to start");
        SleepFor(random_() % 4000);
        Kill(victim);
        left_over_ = std::max(left_over_, LeftOver());
        const std::uint32_t other_before = shared_->other.written;
        const std::uint32_t found = key_.Read(kVictim);
        const bool interrupted = mine.started != mine.written;
        if (found != mine.written && !(interrupted && found == mine.started)) {
            Fail("the value is neither the old nor the new one");
        }
        interrupted_ += interrupted;
        new_ += interrupted && found == mine.started;
        if (key_.Read(kOther) < other_before) Fail("another's value was lost");
        const auto bystander = static_cast<std::uint32_t>(random_() % kBystanders);
        if (key_.Read(Bystander(bystander)) != bystander) Fail("a bystander changed");
        mine.written = found;
        mine.started = found;
        const std::uint64_t began = Now();
        WaitUntil([&] { return shared_->other.written > other_before; }, "to write after a kill");
        longest_ = std::max(longest_, Now() - began);
    }

    // Files in the registry's folder besides the store's own three.
    static std::size_t LeftOver() {
        std::size_t count = 0;
        const std::string folder = std::string(std::getenv("QV_HOST_ROOT")) + "/registry";
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            count += !entry.path().filename().string().starts_with("registry.db");
        }
        return count;
    }

    void Report() {
        for (std::uint32_t i = 0; i < kBystanders; ++i) {
            if (key_.Read(Bystander(i)) != i) Fail("a bystander changed");
        }
        if (key_.Read(kOther) != shared_->other.written) Fail("another's value was lost");
        if (left_over_ > 0) Fail(std::to_string(left_over_) + " files are left over");
        if (!QvHostCheckRegistry(nullptr, 0)) Fail("the store is damaged");
        std::printf("kills: %u, in the middle of a write: %u\n", kills_, interrupted_);
        std::printf("values afterwards: old %u, new %u, torn 0\n", interrupted_ - new_, new_);
        std::printf("writes of the other process: %u, lost 0\n", shared_->other.written.load());
        std::printf("longest wait for the next write: %.1f ms\n",
                    static_cast<double>(longest_) / 1e3);
    }

    const std::uint32_t kills_;
    TShared* const shared_ = NewShared<TShared>();
    TKey key_;
    std::mt19937 random_{std::random_device()()};
    std::uint32_t interrupted_ = 0;
    std::uint32_t new_ = 0;
    std::size_t left_over_ = 0;
    std::uint64_t longest_ = 0;
};

}  // namespace

int stress::KillRegistry(const TArguments& arguments) {
    if (std::getenv("QV_HOST_ROOT") == nullptr) Fail("QV_HOST_ROOT is not set");
    TCampaign(static_cast<std::uint32_t>(std::stoul(arguments[0]))).Run();
    return 0;
}
