// What other processes can leave in the folder of windows and send to their sockets.
#include <windows.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "support/fresh_host_root.h"

namespace {

struct Packet {
    std::uint32_t magic = 0x474D5651, kind = 2, message = WM_COPYDATA, payload_bytes = 0;
    std::uint64_t wparam = 0, lparam = 0, copy_data = 0;
};

int calls = 0;
LRESULT CALLBACK CountingProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_COPYDATA || message >= WM_USER) ++calls;
    return DefWindowProcW(window, message, wparam, lparam);
}

class WindowPeers : public testing::Test {
  protected:
    WindowPeers() {
        calls = 0;
        WNDCLASSW description{};
        description.lpfnWndProc = CountingProcedure;
        description.lpszClassName = TEXT("QvPeers");
        RegisterClassW(&description);
        window = CreateWindowExW(0, TEXT("QvPeers"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                                 nullptr, nullptr);
    }
    ~WindowPeers() override { DestroyWindow(window); }
    std::string File(const std::string& name) { return root.Folder() + "/run/windows/" + name; }
    int Connect() {
        char number[16];
        std::snprintf(number, sizeof number, "%zx.s", reinterpret_cast<std::size_t>(window));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        File(number).copy(address.sun_path, sizeof address.sun_path - 1);
        const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return fd;
    }
    // Sends `bytes` of the packet, with `file` unless it is -1, and has the window look.
    void Deliver(const Packet& packet, std::size_t bytes, int file) {
        const int fd = Connect();
        Packet copy = packet;
        iovec part{&copy, bytes};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        if (file >= 0) {
            header.msg_control = control;
            header.msg_controllen = sizeof control;
            cmsghdr* const rights = CMSG_FIRSTHDR(&header);
            rights->cmsg_level = SOL_SOCKET;
            rights->cmsg_type = SCM_RIGHTS;
            rights->cmsg_len = CMSG_LEN(sizeof(int));
            std::memcpy(CMSG_DATA(rights), &file, sizeof file);
        }
        EXPECT_EQ(sendmsg(fd, &header, MSG_NOSIGNAL), static_cast<ssize_t>(bytes));
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        close(fd);
    }

    test::FreshHostRoot root;
    HWND window = nullptr;
};

TEST_F(WindowPeers, MessagesThatAreNotWellFormedAreDropped) {
    const int open_file = memfd_create("unsealed", MFD_CLOEXEC);
    ASSERT_EQ(write(open_file, "abcd", 4), 4);
    int pipe_ends[2];
    ASSERT_EQ(pipe(pipe_ends), 0);
    Packet with_bytes;
    with_bytes.payload_bytes = 4;
    const Packet huge{.payload_bytes = 0xFFFFFFFF};
    const Packet foreign_pointer{.message = WM_DEVMODECHANGE, .lparam = 0x1234};
    const Packet posted{.kind = 1};
    const Packet wrong_magic{.magic = 1};
    Deliver(with_bytes, 10, -1);
    Deliver(with_bytes, sizeof(Packet), -1);
    Deliver(with_bytes, sizeof(Packet), open_file);
    Deliver(with_bytes, sizeof(Packet), pipe_ends[0]);
    for (const Packet& packet : {huge, foreign_pointer, posted, wrong_magic}) {
        Deliver(packet, sizeof packet, -1);
    }
    EXPECT_EQ(calls, 0);
    const int silent = Connect();
    Deliver(Packet(), sizeof(Packet), -1);
    EXPECT_EQ(calls, 1);
    for (const int fd : {open_file, pipe_ends[0], pipe_ends[1], silent}) close(fd);
}

TEST_F(WindowPeers, RecordsThatAreNotWholeAreNoWindows) {
    const char* const records[] = {"", "QVWN", "QVWN....................",
                                   "QVWN\1\0\0\0\1\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"};
    int holders[4];
    for (int i = 0; i < 4; ++i) {
        const std::string name = File("1100" + std::to_string(2 * i));
        std::ofstream(name, std::ios::binary).write(records[i], i == 3 ? 24 : i == 2 ? 24 : 4 * i);
        holders[i] = open(name.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_EQ(flock(holders[i], LOCK_EX), 0);
    }
    std::ofstream(File("22222")) << "nobody's";
    std::ofstream(File("next")) << "zz";
    EXPECT_EQ(FindWindowW(nullptr, nullptr), window);
    EXPECT_FALSE(std::filesystem::exists(File("22222")));
    EXPECT_TRUE(DestroyWindow(window));
    window = CreateWindowExW(0, TEXT("QvPeers"), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr,
                             nullptr);
    EXPECT_NE(window, nullptr);
    for (const int fd : holders) close(fd);
}

}  // namespace
