// Lays records of the spooler out in one buffer of the caller: first the records, then the blocks
// that they point to, each at a multiple of 8, then their texts, packed.
#pragma once

#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/os_error.h"

namespace host {

// Collects records with copies of their blocks and texts. Text and Block belong to the record that
// Add began last. For one thread.
template <class Record>
class RecordBuffer {
  public:
    using TextMember = LPWSTR Record::*;
    using BlockMember = LPDEVMODEW Record::*;

    // Begins the next record. Deliver sets its pointers. The reference is valid until the next Add.
    Record& Add() { return records_.emplace_back(); }

    Record& Last() { return records_.back(); }

    void Text(TextMember member, std::u16string_view text) {
        texts_.push_back({records_.size() - 1, member, std::u16string(text)});
    }

    // An empty block leaves the pointer null.
    void Block(BlockMember member, std::vector<BYTE> bytes) {
        if (!bytes.empty()) blocks_.push_back({records_.size() - 1, member, std::move(bytes)});
    }

    // Copies everything to `buffer` and sets `needed` to its size in bytes. False with the last
    // error; ERROR_INSUFFICIENT_BUFFER when `size` is smaller. `count` may be null.
    BOOL Deliver(LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
        const std::size_t total = TotalSize();
        if (total > std::numeric_limits<DWORD>::max()) return Fail(ERROR_NOT_ENOUGH_MEMORY);
        *needed = static_cast<DWORD>(total);
        if (count != nullptr) *count = 0;
        if (total > size) return Fail(ERROR_INSUFFICIENT_BUFFER);
        if (total > 0) CopyTo(buffer);
        if (count != nullptr) *count = static_cast<DWORD>(records_.size());
        return TRUE;
    }

  private:
    struct TextPiece {
        std::size_t record;
        TextMember member;
        std::u16string text;
        std::size_t Bytes() const { return (text.size() + 1) * sizeof(WCHAR); }
    };
    struct BlockPiece {
        std::size_t record;
        BlockMember member;
        std::vector<BYTE> bytes;
        std::size_t Bytes() const { return (bytes.size() + 7) / 8 * 8; }
    };

    std::size_t TotalSize() const {
        std::size_t total = records_.size() * sizeof(Record);
        for (const BlockPiece& piece : blocks_) total += piece.Bytes();
        for (const TextPiece& piece : texts_) total += piece.Bytes();
        return total;
    }

    void CopyTo(LPBYTE buffer) {
        LPBYTE at = buffer + records_.size() * sizeof(Record);
        for (const BlockPiece& piece : blocks_) {
            records_[piece.record].*piece.member = reinterpret_cast<LPDEVMODEW>(at);
            std::memset(at, 0, piece.Bytes());
            std::memcpy(at, piece.bytes.data(), piece.bytes.size());
            at += piece.Bytes();
        }
        for (const TextPiece& piece : texts_) {
            records_[piece.record].*piece.member = reinterpret_cast<LPWSTR>(at);
            std::memcpy(at, piece.text.c_str(), piece.Bytes());
            at += piece.Bytes();
        }
        std::memcpy(buffer, records_.data(), records_.size() * sizeof(Record));
    }

    std::vector<Record> records_;
    std::vector<BlockPiece> blocks_;
    std::vector<TextPiece> texts_;
};

// Checks the arguments of a call with a caller's buffer: `needed` is always given, and `buffer`
// when `size` is not 0.
inline bool BufferIsGiven(const BYTE* buffer, DWORD size, const DWORD* needed) {
    return needed != nullptr && (buffer != nullptr || size == 0);
}

}  // namespace host
