// The log that a command looks at: a file, standard input, or the log that is in force.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/json_output.h"
#include "log_file/log_reader.h"

namespace qv {

// The file's name, or that of the log in force when it is empty. Throws Failure (kCannotOpen) when
// that one is switched off.
std::string LogName(const std::string& file);

// Throws Failure (kCannotOpen).
[[noreturn]] void CannotOpenLog(const std::string& name, const UnicodeString& reason);

// Opens the log; one whose header is damaged starts with what else can be read. Throws Failure
// (kCannotOpen) when the file cannot be read or holds no log.
void OpenLog(Mox::TLogReader& reader, const std::string& name);
// The same for bytes that were read already.
void TakeLog(Mox::TLogReader& reader, const std::string& name, const std::string& bytes);

// Whether somebody keeps the log's lock. Looks for a second: a lock that others take in turn is
// free once, or the header changes.
bool IsLockStuck(const UnicodeString& name);

// Whether it is a matter of certain bytes.
bool IsPlace(const Mox::TLogSkip& skip);
// "skipped 55 bytes at offset 96: reason"
std::string SkipText(const Mox::TLogSkip& skip);
// For TLogReader::Missing.
std::string MissingText(std::uint32_t bytes);
// What the reader has left out so far.
std::vector<Mox::TLogSkip> Skips(const Mox::TLogReader& reader);
// [{"offset": 96, "size": 55, "reason": "..."}, ...]
Json DamageList(const std::vector<Mox::TLogSkip>& skips);
// Says on standard error what the reader has left out, and throws Failure (kDamaged) when there was
// anything.
void FailOnSkips(const Mox::TLogReader& reader);

}  // namespace qv
