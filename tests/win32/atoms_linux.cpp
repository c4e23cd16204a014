// The table of atoms: its cost, its end, and what others can write into its file.
#include <windows.h>

#include <gtest/gtest.h>
#include <time.h>

#include <fstream>
#include <random>

#include "support/fresh_host_root.h"

namespace {

constexpr int kNumbers = 0x4000;

ATOM Add(int number) {
    WCHAR name[16] = TEXT("atom ");
    for (int i = 0; i < 5; ++i, number /= 10) name[9 - i] = static_cast<WCHAR>('0' + number % 10);
    return GlobalAddAtomW(name);
}

double Seconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

TEST(AtomTable, CostsTheSameUpToTheLastNumber) {
    const test::FreshHostRoot root;
    constexpr int kPart = kNumbers / 16;
    double parts[16];
    for (int i = 0; i < kNumbers; ++i) {
        if (i % kPart == 0) parts[i / kPart] = Seconds();
        ASSERT_NE(Add(i), 0);
    }
    EXPECT_LT(Seconds() - parts[15], 4 * (parts[2] - parts[1]));
    EXPECT_EQ(Add(kNumbers), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    const ATOM known = Add(77);
    EXPECT_EQ(GlobalDeleteAtom(known), 0);
    EXPECT_EQ(Add(kNumbers), 0);
    EXPECT_EQ(GlobalDeleteAtom(known), 0);
    EXPECT_EQ(Add(kNumbers), known);
}

TEST(AtomTable, EndsWithTheLastProcessThatUsesIt) {
    const test::FreshHostRoot root;
    const ATOM atom = Add(1);
    {
        const test::FreshHostRoot other;
        EXPECT_EQ(GlobalDeleteAtom(atom), atom);
    }
    EXPECT_EQ(GlobalDeleteAtom(atom), atom);
}

TEST(AtomTable, DamageCostsTheNamesItHits) {
    constexpr int kNames = 300;
    constexpr std::size_t kRecords = 64 + 4 * 2 * kNumbers, kRecord = 528;
    const test::FreshHostRoot root;
    ATOM atoms[kNames];
    for (int i = 0; i < kNames; ++i) atoms[i] = Add(i);
    std::fstream file(root.Folder() + "/run/names/atoms.table");
    auto damage = [&, random = std::mt19937(7)](std::size_t at, std::size_t size) mutable {
        file.seekp(static_cast<std::streamoff>(at));
        for (; size > 0; --size) file.put(static_cast<char>(random()));
        file.flush();
    };
    for (int round = 0; round < 10; ++round) {
        damage(0, round % 2 == 0 ? 16 : kRecords);
        damage(kRecords + kRecord * 7, kRecord);
        // Links of sound records to themselves and to nowhere.
        damage(kRecords + kRecord * (20 + static_cast<std::size_t>(round)) + 4, 4);
        for (int i = 0; i < kNames; ++i) {
            if (i == 7) continue;
            ASSERT_EQ(Add(i), atoms[i]) << round << ", " << i;
        }
    }
    for (const std::size_t at : {std::size_t{0}, kRecords}) damage(at, kRecords + kRecord * 400);
    EXPECT_NE(Add(1), 0);
}

}  // namespace
