// A connection to the registry's database: one file, its statements, its errors as Win32 codes.
//
// One thread at a time; never across a fork. Whatever fails throws RegError; a statement that meets
// another process's lock fails at once with ERROR_BUSY.
#pragma once

#include <sqlite3.h>
#include <sys/types.h>
#include <windows.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace host {

// A call that cannot be done. The text, for a person, is empty when the code says it all.
struct RegError {
    LSTATUS code;
    std::string text;
};

// With the code and text of errno, for a file.
[[noreturn]] void ThrowErrno(const std::string& path);

class RegDatabase {
  public:
    enum class Kind {
        kFile,    // for writing where the user may write
        kFrozen,  // a file that nobody can write to, in a folder of the same kind
        kMemory,  // an empty database of this process
    };
    RegDatabase(const std::string& path, Kind kind);
    RegDatabase(const RegDatabase&) = delete;
    RegDatabase& operator=(const RegDatabase&) = delete;
    ~RegDatabase();

    // Whether the file is a store of this version. False for one that holds nothing yet;
    // ERROR_BADDB for what is no store.
    bool IsMade();
    // Makes the file ready for many processes: a log of changes beside it, which readers and the
    // one writer share. A file that is ready is left as it is.
    void PrepareFile();
    void MakeTables();
    // After the transaction that made the tables: brings them from the log into the file, so that
    // it says what it is, and waits once for the disk.
    void FinishFile();

    void Run(const char* sql) { Check(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr)); }
    // Begin takes the lock that all changes take.
    void Begin();
    void Commit();
    void RollBack();
    bool InTransaction() const { return sqlite3_get_autocommit(db_) == 0; }
    // The rows that the last statement changed.
    int Changes() const { return sqlite3_changes(db_); }
    std::int64_t LastId() const { return sqlite3_last_insert_rowid(db_); }
    // What every process's commit changes, in memory that all of them share; empty when there is
    // no such memory. Valid as long as the connection.
    std::span<const BYTE> CommitMark();
    // Cuts off the log what a change that was taken back has left there, and brings the rest into
    // the file if that can be. Outside of transactions.
    void TrimLog();
    // Of the log's file; 0 when there is none.
    off_t LogBytes() const;
    // "ok", or what is wrong with the file, from reading all of it.
    std::string Examine();

    // Throws unless the code is a success.
    void Check(int code) {
        if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) Throw();
    }

  private:
    friend class RegQuery;
    sqlite3_stmt* Statement(const char* sql);
    sqlite3_file* File();
    std::int64_t Number(const char* sql);
    std::string Text(const char* sql);
    [[noreturn]] void Throw();

    const std::string path_;
    sqlite3* db_ = nullptr;
    std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

// One statement in use, from its first argument to the end of this object. Its text, a literal, is
// compiled once for each connection. Without a database it has no rows.
class RegQuery {
  public:
    RegQuery(RegDatabase* database, const char* sql)
        : database_(database),
          statement_(database == nullptr ? nullptr : database->Statement(sql)) {}
    RegQuery(const RegQuery&) = delete;
    RegQuery& operator=(const RegQuery&) = delete;
    ~RegQuery();

    // The arguments in their order. Bytes and texts must live as long as this object.
    RegQuery& Give(std::int64_t number);
    RegQuery& Give(std::span<const BYTE> bytes);
    RegQuery& Give(const std::string& bytes) {
        return Give({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
    }
    RegQuery& Give(std::u16string_view text);

    // Goes to the next row; false when there is none.
    bool Next();
    // The row's columns; texts and bytes until the next step.
    std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
    std::u16string_view Text(int column) const;
    std::span<const BYTE> Bytes(int column) const;

  private:
    RegDatabase* const database_;
    sqlite3_stmt* const statement_;
    int given_ = 0;
};

}  // namespace host
