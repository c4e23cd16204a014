#include "windows/ipc.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cstring>

#include "text/host_text.h"

namespace host {

namespace {

constexpr std::uint32_t kPacketMagic = 0x474D5651;
constexpr std::size_t kMostPayload = std::size_t{64} << 20;
constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

UniqueFd PayloadFile(const std::vector<BYTE>& payload) {
    UniqueFd file(memfd_create("message", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    std::size_t done = 0;
    while (file && done < payload.size()) {
        const ssize_t count = write(file.get(), payload.data() + done, payload.size() - done);
        if (count <= 0) return UniqueFd();
        done += static_cast<std::size_t>(count);
    }
    return file && fcntl(file.get(), F_ADD_SEALS, kSeals) == 0 ? std::move(file) : UniqueFd();
}

// Only a sealed memory file is accepted, because reading from anything else might wait.
bool ReadPayload(int file, std::size_t bytes, std::vector<BYTE>& payload) {
    struct stat info;
    const int seals = fcntl(file, F_GET_SEALS);
    if (seals < 0 || (seals & kSeals) != kSeals || fstat(file, &info) != 0 ||
        info.st_size != static_cast<off_t>(bytes)) {
        return false;
    }
    payload.resize(bytes);
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t count =
            pread(file, payload.data() + done, bytes - done, static_cast<off_t>(done));
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool IsOwnUser(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

union FileControl {
    cmsghdr align;
    char bytes[CMSG_SPACE(sizeof(int))];
};

UniqueFd FileOf(msghdr& header) {
    const cmsghdr* const control = CMSG_FIRSTHDR(&header);
    if (control == nullptr || control->cmsg_level != SOL_SOCKET ||
        control->cmsg_type != SCM_RIGHTS || control->cmsg_len != CMSG_LEN(sizeof(int))) {
        return UniqueFd();
    }
    int file = -1;
    std::memcpy(&file, CMSG_DATA(control), sizeof file);
    return UniqueFd(file);
}

bool IsWellFormed(const IpcMessage& wire) {
    const MessagePacket& packet = wire.packet;
    if (packet.magic != kPacketMagic) return false;
    if (packet.kind == MessageKind::kPost) {
        return packet.payload_bytes == 0 && !CarriesMemory(packet.message);
    }
    if (packet.kind != MessageKind::kSend) return false;
    if (packet.message == WM_COPYDATA) return true;
    if (packet.payload_bytes == 0) return packet.message != WM_DEVMODECHANGE || packet.lparam == 0;
    return packet.message == WM_DEVMODECHANGE && packet.payload_bytes % sizeof(WCHAR) == 0;
}

// The text must end exactly where the block ends.
bool HasItsTerminator(const IpcMessage& wire) {
    if (wire.packet.message != WM_DEVMODECHANGE || wire.payload.empty()) return true;
    return wire.payload.back() == 0 && wire.payload[wire.payload.size() - 2] == 0;
}

}  // namespace

bool CarriesMemory(UINT message) {
    return message == WM_COPYDATA || message == WM_DEVMODECHANGE;
}

DWORD PackMessage(MessageKind kind, UINT message, WPARAM wparam, LPARAM lparam, IpcMessage& wire) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    wire.packet = {kPacketMagic, kind, message, 0, wparam, static_cast<std::uint64_t>(lparam), 0};
    if (message == WM_COPYDATA) {
        const auto* const block = reinterpret_cast<const COPYDATASTRUCT*>(lparam);
        if (block == nullptr || (block->lpData == nullptr && block->cbData != 0)) {
            return ERROR_INVALID_PARAMETER;
        }
        wire.packet.copy_data = block->dwData;
        bytes = block->lpData;
        size = block->cbData;
    } else if (message == WM_DEVMODECHANGE && lparam != 0) {
        const WideView text = ViewOf(reinterpret_cast<LPCWSTR>(lparam));
        bytes = text.data();
        size = (text.size() + 1) * sizeof(WCHAR);
    }
    if (size > kMostPayload) return ERROR_NOT_ENOUGH_MEMORY;
    wire.packet.payload_bytes = static_cast<std::uint32_t>(size);
    if (size > 0)
        wire.payload.assign(static_cast<const BYTE*>(bytes),
                            static_cast<const BYTE*>(bytes) + size);
    return NO_ERROR;
}

bool WriteMessage(int connection, const IpcMessage& wire) {
    MessagePacket packet = wire.packet;
    iovec part{&packet, sizeof packet};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    FileControl control{};
    UniqueFd file;
    if (!wire.payload.empty()) {
        file = PayloadFile(wire.payload);
        if (!file) return false;
        header.msg_control = &control;
        header.msg_controllen = sizeof control.bytes;
        cmsghdr* const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int));
        const int number = file.get();
        std::memcpy(CMSG_DATA(rights), &number, sizeof number);
    }
    return sendmsg(connection, &header, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof packet);
}

void WriteAnswer(int connection, LRESULT answer) {
    // A sender that has given up does not need the answer.
    [[maybe_unused]] const ssize_t sent = send(connection, &answer, sizeof answer, MSG_NOSIGNAL);
}

bool ReadAnswer(int connection, LRESULT& answer) {
    LRESULT value = 0;
    if (recv(connection, &value, sizeof value, MSG_DONTWAIT) != sizeof value) return false;
    answer = value;
    return true;
}

ReadOutcome ReadMessage(int connection, IpcMessage& wire) {
    FileControl control{};
    iovec part{&wire.packet, sizeof wire.packet};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = &control;
    header.msg_controllen = sizeof control.bytes;
    const ssize_t count = recvmsg(connection, &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return ReadOutcome::kNothingYet;
    if (count < 0) return ReadOutcome::kRefused;
    const UniqueFd file = FileOf(header);
    const bool whole = count == static_cast<ssize_t>(sizeof wire.packet) &&
                       (header.msg_flags & MSG_TRUNC) == 0 && IsOwnUser(connection) &&
                       IsWellFormed(wire) && wire.packet.payload_bytes <= kMostPayload;
    if (!whole) return ReadOutcome::kRefused;
    if (wire.packet.payload_bytes == 0) return ReadOutcome::kMessage;
    const bool read = file && ReadPayload(file.get(), wire.packet.payload_bytes, wire.payload) &&
                      HasItsTerminator(wire);
    return read ? ReadOutcome::kMessage : ReadOutcome::kRefused;
}

bool PeerIsGone(int connection) {
    pollfd state{connection, 0, 0};
    return poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace host
