// The Linux host's registry: one change of a settings block, beside the same row in a bare database
// that is kept as durably.
#include <sqlite3.h>
#include <windows.h>

#include <vector>

#include "support.h"

namespace {

constexpr DWORD kBytes = 4400;

// Each time another block.
class Block {
  public:
    const BYTE* Next() {
        ++bytes_[number_++ % kBytes];
        return bytes_.data();
    }

  private:
    std::vector<BYTE> bytes_ = std::vector<BYTE>(kBytes);
    std::size_t number_ = 0;
};

void SetOurs(benchmark::State& state) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("Printers\\DevModePerUser"), 0, nullptr, 0,
                    KEY_ALL_ACCESS, nullptr, &key, nullptr);
    Block block;
    for (auto _ : state) {
        const LSTATUS code =
            RegSetValueExW(key, TEXT("Vantrel Fax"), 0, REG_BINARY, block.Next(), kBytes);
        if (code != ERROR_SUCCESS) state.SkipWithError("not set");
    }
    RegCloseKey(key);
}

void SetRow(benchmark::State& state) {
    sqlite3* database = nullptr;
    sqlite3_stmt* update = nullptr;
    sqlite3_open((bench::HostRoot() + "/row.db").c_str(), &database);
    sqlite3_exec(database,
                 "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                 "PRAGMA wal_autocheckpoint = 250;"
                 "CREATE TABLE IF NOT EXISTS one(id INTEGER PRIMARY KEY, data BLOB);"
                 "INSERT OR IGNORE INTO one VALUES(1, x'00')",
                 nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(database, "UPDATE one SET data = ?1 WHERE id = 1", -1, &update, nullptr);
    Block block;
    for (auto _ : state) {
        sqlite3_bind_blob(update, 1, block.Next(), kBytes, SQLITE_STATIC);
        if (sqlite3_step(update) != SQLITE_DONE) state.SkipWithError("not set");
        sqlite3_reset(update);
    }
    sqlite3_finalize(update);
    sqlite3_close(database);
}

BENCHMARK(SetOurs)->Name("host/registry_set/ours");
BENCHMARK(SetRow)->Name("host/registry_set/sqlite");

}  // namespace
