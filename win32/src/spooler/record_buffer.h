// Lays records of the spooler out in a caller's one buffer: the records first, then the blocks that
// they point to, each at a multiple of 8, then their texts, packed.
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

template <class Record>
class RecordBuffer {
  public:
    using TextMember = LPWSTR Record::*;
    using BlockMember = LPDEVMODEW Record::*;

    // Begins the next record; its pointers are set by the calls that follow.
    Record& Add() { return records_.emplace_back(); }

    Record& Last() { return records_.back(); }

    void Text(TextMember member, std::u16string_view text) {
        texts_.push_back({records_.size() - 1, member, std::u16string(text)});
    }

    // An empty block leaves the pointer null.
    void Block(BlockMember member, std::vector<BYTE> bytes) {
        if (!bytes.empty()) blocks_.push_back({records_.size() - 1, member, std::move(bytes)});
    }

    // Copies everything out and reports the size it takes. Fails with ERROR_INSUFFICIENT_BUFFER
    // when `size` is too small. No records take no room. `count` is null where a call has none.
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

// The arguments that every call with a caller's buffer has in common: where the needed size goes
// and, when a size is given, the buffer itself.
inline bool BufferIsGiven(const BYTE* buffer, DWORD size, const DWORD* needed) {
    return needed != nullptr && (buffer != nullptr || size == 0);
}

}  // namespace host
