// Messages between windows of different threads and processes, as packets of one connection each.
//
// A connection carries one message and, for a sent one, the answer. Memory that belongs to the
// message (the bytes of WM_COPYDATA, the text of WM_DEVMODECHANGE) travels as a sealed memory file.
// So the socket does not limit its size, and the receiver never waits for it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "base/unique_fd.h"

namespace host {

enum class MessageKind : std::uint32_t { kPost = 1, kSend = 2 };

struct MessagePacket {
    std::uint32_t magic;
    MessageKind kind;
    std::uint32_t message;
    std::uint32_t payload_bytes;
    std::uint64_t wparam;
    std::uint64_t lparam;
    std::uint64_t copy_data;  // COPYDATASTRUCT::dwData
};
static_assert(sizeof(MessagePacket) == 40);

// A message with its own copy of what its parameters point at.
struct IpcMessage {
    MessagePacket packet{};
    std::vector<BYTE> payload;
};

// Whether the message's parameters point at memory that has to travel; such messages are sent,
// never posted.
bool CarriesMemory(UINT message);

// Fills `wire` from a message's parameters. Win32 code: ERROR_INVALID_PARAMETER for a block without
// bytes, ERROR_NOT_ENOUGH_MEMORY for more than 64 MiB.
DWORD PackMessage(MessageKind kind, UINT message, WPARAM wparam, LPARAM lparam, IpcMessage& wire);

// False, with errno, on failure.
bool WriteMessage(int connection, const IpcMessage& wire);
void WriteAnswer(int connection, LRESULT answer);
// False when the connection ended without an answer.
bool ReadAnswer(int connection, LRESULT& answer);

enum class ReadOutcome { kNothingYet, kRefused, kMessage };
// Reads the message of an accepted connection. Refused: it ended, it is another user's, or it does
// not hold one well-formed message.
ReadOutcome ReadMessage(int connection, IpcMessage& wire);

// Whether the other side has closed the connection.
bool PeerIsGone(int connection);

}  // namespace host
