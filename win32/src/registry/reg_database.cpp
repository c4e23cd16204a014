#include "registry/reg_database.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <tuple>

#include "base/os_error.h"
#include "base/size_signal.h"
#include "registry/reg_names.h"

namespace host {

namespace {

constexpr std::int64_t kApplication = 0x51765265;  // "QvRe"
constexpr std::int64_t kVersion = 1;
constexpr DWORD kHeaderBytes = 48;   // of the shared index: the part that a commit changes
constexpr int kIndexBytes = 0x8000;  // of the shared index's first piece

// Of the same header, and of the log itself, as the file format of SQLite has them.
constexpr std::size_t kFramesAt = 16;
constexpr off_t kLogHeaderBytes = 32, kFrameHeaderBytes = 24;

// Names as they are compared, upper-case, are the unique keys; texts keep the spelling. A number
// never comes back, so that the handle of a removed key never means another one.
constexpr const char kTables[] =
    "CREATE TABLE reg_keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
    " folded BLOB NOT NULL, name TEXT NOT NULL, written INTEGER NOT NULL,"
    " UNIQUE(parent, folded)) STRICT;"
    "CREATE TABLE reg_values(id INTEGER PRIMARY KEY, key INTEGER NOT NULL,"
    " folded BLOB NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
    " UNIQUE(key, folded)) STRICT;"
    "CREATE INDEX values_in_order ON reg_values(key);";

struct CodeRow {
    int code;
    LSTATUS error;
};

constexpr CodeRow kCodes[] = {
    {SQLITE_BUSY, ERROR_BUSY},
    {SQLITE_LOCKED, ERROR_BUSY},
    {SQLITE_PROTOCOL, ERROR_BUSY},
    {SQLITE_FULL, ERROR_DISK_FULL},
    {SQLITE_READONLY, ERROR_ACCESS_DENIED},
    {SQLITE_PERM, ERROR_ACCESS_DENIED},
    {SQLITE_AUTH, ERROR_ACCESS_DENIED},
    {SQLITE_CORRUPT, ERROR_BADDB},
    {SQLITE_NOTADB, ERROR_BADDB},
    {SQLITE_NOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {SQLITE_TOOBIG, ERROR_NOT_ENOUGH_MEMORY},
};

LSTATUS CodeOf(int code, int system_code) {
    for (const CodeRow& row : kCodes) {
        if (row.code == (code & 0xFF)) return row.error;
    }
    // A limit for users or files, which the system's code may not tell.
    const bool is_growth = code == SQLITE_IOERR_WRITE || code == SQLITE_IOERR_SHMSIZE;
    if (is_growth && system_code != EIO) return ERROR_DISK_FULL;
    const bool is_file = (code & 0xFF) == SQLITE_CANTOPEN || (code & 0xFF) == SQLITE_IOERR;
    return is_file && system_code != 0 ? static_cast<LSTATUS>(ErrorFromErrno(system_code))
                                       : LSTATUS{ERROR_GEN_FAILURE};
}

// Each byte is written as its number, so that the database's own name syntax takes none for
// something else.
std::string FrozenName(const std::string& path) {
    std::string name = "file:";
    for (const char byte : path) {
        char number[4];
        std::snprintf(number, sizeof number, "%%%02X", static_cast<unsigned char>(byte));
        name += byte == '/' ? "/" : number;
    }
    return name + "?immutable=1";
}

}  // namespace

void ThrowErrno(const std::string& path) {
    const int code = errno;
    throw RegError{static_cast<LSTATUS>(ErrorFromErrno(code)),
                   path + ": " + std::generic_category().message(code)};
}

RegDatabase::RegDatabase(const std::string& path, Kind kind) : path_(path) {
    SizeSignal::Hold();
    const int flags = SQLITE_OPEN_NOMUTEX;
    int code = SQLITE_OK;
    if (kind == Kind::kFrozen) {
        code = sqlite3_open_v2(FrozenName(path).c_str(), &db_,
                               SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | flags, nullptr);
    } else {
        code = sqlite3_open_v2(kind == Kind::kMemory ? ":memory:" : path.c_str(), &db_,
                               SQLITE_OPEN_READWRITE | flags, nullptr);
    }
    try {
        Check(code);
        // What the file says of itself is not believed, and looking at it writes nothing: the log
        // of changes stays beside it when a process ends. The log stays short, because the first
        // process reads all of it.
        for (const int option : {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW}) {
            sqlite3_db_config(db_, option, 0, nullptr);
        }
        sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        int keep = 1;
        sqlite3_file_control(db_, "main", SQLITE_FCNTL_PERSIST_WAL, &keep);
        Run("PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON; PRAGMA synchronous = NORMAL;"
            " PRAGMA wal_autocheckpoint = 250; PRAGMA journal_size_limit = 1048576");
    } catch (...) {
        sqlite3_close(db_);
        throw;
    }
}

RegDatabase::~RegDatabase() {
    for (const auto& [sql, statement] : statements_) sqlite3_finalize(statement);
    sqlite3_close(db_);
}

void RegDatabase::Throw() {
    const LSTATUS error = db_ == nullptr
                              ? ERROR_NOT_ENOUGH_MEMORY
                              : CodeOf(sqlite3_extended_errcode(db_), sqlite3_system_errno(db_));
    throw RegError{error, path_ + ": " + (db_ == nullptr ? "out of memory" : sqlite3_errmsg(db_))};
}

sqlite3_stmt* RegDatabase::Statement(const char* sql) {
    sqlite3_stmt*& statement = statements_[sql];
    if (statement == nullptr) {
        Check(sqlite3_prepare_v3(db_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    }
    return statement;
}

void RegDatabase::Begin() {
    RegQuery(this, "BEGIN IMMEDIATE").Next();
}

void RegDatabase::Commit() {
    RegQuery(this, "COMMIT").Next();
}

void RegDatabase::RollBack() {
    RegQuery(this, "ROLLBACK").Next();
}

std::string RegDatabase::Text(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v2(db_, sql, -1, &statement, nullptr));
    const int code = sqlite3_step(statement);
    const auto* const text = sqlite3_column_text(statement, 0);
    std::string result = text == nullptr ? "" : reinterpret_cast<const char*>(text);
    sqlite3_finalize(statement);
    Check(code);
    return result;
}

std::int64_t RegDatabase::Number(const char* sql) {
    return std::strtoll(Text(sql).c_str(), nullptr, 10);
}

bool RegDatabase::IsMade() {
    const std::int64_t application = Number("PRAGMA application_id");
    const std::int64_t version = Number("PRAGMA user_version");
    if (application == kApplication && version == kVersion) return true;
    if (application == kApplication) {
        throw RegError{ERROR_BADDB, path_ + ": made by another version of this program"};
    }
    if (Number("SELECT count(*) FROM sqlite_schema") == 0) return false;
    throw RegError{ERROR_BADDB, path_ + ": a database, but not the registry's"};
}

void RegDatabase::PrepareFile() {
    if (Text("PRAGMA journal_mode") == "wal") return;
    Run("PRAGMA synchronous = OFF");
    if (Text("PRAGMA journal_mode = WAL") == "wal") return;
    throw RegError{ERROR_NOT_SUPPORTED, path_ + ": several processes cannot share files here"};
}

void RegDatabase::MakeTables() {
    Run(kTables);
    for (std::size_t i = 0; i < kRegRoots; ++i) {
        const std::string folded = FoldedName(RegRoots()[i].name);
        RegQuery add(this,
                     "INSERT INTO reg_keys(parent, folded, name, written) VALUES(0, ?1, ?2, 0)");
        add.Give(folded).Give(RegRoots()[i].name).Next();
    }
    const std::string marks = "PRAGMA application_id = " + std::to_string(kApplication) +
                              "; PRAGMA user_version = " + std::to_string(kVersion);
    Run(marks.c_str());
}

void RegDatabase::FinishFile() {
    Run("PRAGMA wal_checkpoint(TRUNCATE); PRAGMA synchronous = NORMAL");
    if (sqlite3_file* const file = File()) Check(file->pMethods->xSync(file, SQLITE_SYNC_NORMAL));
}

// Null for a database in memory.
sqlite3_file* RegDatabase::File() {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(db_, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    return file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2 ? nullptr
                                                                                        : file;
}

std::span<const BYTE> RegDatabase::CommitMark() {
    volatile void* index = nullptr;
    sqlite3_file* const file = File();
    if (file == nullptr) return {};
    if (file->pMethods->xShmMap(file, 0, kIndexBytes, 0, &index) != SQLITE_OK) return {};
    if (index == nullptr) return {};
    return {static_cast<const BYTE*>(const_cast<const void*>(index)), kHeaderBytes};
}

off_t RegDatabase::LogBytes() const {
    struct stat log;
    return stat((path_ + "-wal").c_str(), &log) == 0 ? log.st_size : 0;
}

// With the lock that all changes take, the log ends where the shared index says, in its header and
// in the copy behind it. By name: closing a second descriptor of the file would end this process's
// locks on it.
void RegDatabase::TrimLog() {
    const off_t frame = kFrameHeaderBytes + Number("PRAGMA page_size");
    Begin();
    const std::span<const BYTE> mark = CommitMark();
    const off_t held = std::max(off_t{0}, LogBytes() - kLogHeaderBytes) / frame;
    if (!mark.empty() &&
        std::ranges::equal(mark, std::span(mark.data() + mark.size(), mark.size()))) {
        std::uint32_t frames = 0;
        std::memcpy(&frames, mark.data() + kFramesAt, sizeof frames);
        const off_t bytes = kLogHeaderBytes + std::min<off_t>(frames, held) * frame;
        if (LogBytes() > bytes) std::ignore = truncate((path_ + "-wal").c_str(), bytes);
    }
    RollBack();
    Run("PRAGMA wal_checkpoint(TRUNCATE)");
}

std::string RegDatabase::Examine() {
    return Text("PRAGMA quick_check(5)");
}

RegQuery::~RegQuery() {
    sqlite3_reset(statement_);
}

RegQuery& RegQuery::Give(std::int64_t number) {
    if (statement_ != nullptr) {
        database_->Check(sqlite3_bind_int64(statement_, ++given_, number));
    }
    return *this;
}

// A null pointer would be no value at all.
RegQuery& RegQuery::Give(std::span<const BYTE> bytes) {
    if (statement_ == nullptr) return *this;
    const void* const data = bytes.empty() ? "" : static_cast<const void*>(bytes.data());
    database_->Check(sqlite3_bind_blob64(statement_, ++given_, data, bytes.size(), SQLITE_STATIC));
    return *this;
}

RegQuery& RegQuery::Give(std::u16string_view text) {
    if (statement_ == nullptr) return *this;
    const void* const units = text.empty() ? u"" : static_cast<const void*>(text.data());
    database_->Check(sqlite3_bind_text64(statement_, ++given_, static_cast<const char*>(units),
                                         text.size() * sizeof(char16_t), SQLITE_STATIC,
                                         SQLITE_UTF16));
    return *this;
}

bool RegQuery::Next() {
    if (statement_ == nullptr) return false;
    const int code = sqlite3_step(statement_);
    database_->Check(code);
    return code == SQLITE_ROW;
}

std::u16string_view RegQuery::Text(int column) const {
    const auto* const units =
        static_cast<const char16_t*>(sqlite3_column_text16(statement_, column));
    const int bytes = sqlite3_column_bytes16(statement_, column);
    return units == nullptr ? std::u16string_view()
                            : std::u16string_view(units, static_cast<std::size_t>(bytes) / 2);
}

std::span<const BYTE> RegQuery::Bytes(int column) const {
    const auto* const data = static_cast<const BYTE*>(sqlite3_column_blob(statement_, column));
    const int bytes = sqlite3_column_bytes(statement_, column);
    return data == nullptr ? std::span<const BYTE>()
                           : std::span(data, static_cast<std::size_t>(bytes));
}

}  // namespace host
