// settings_memory: counts the blocks of memory that each operation of a settings block takes, and
// those that it gives back before its end. Prints a line for each operation: its name, blocks
// taken, blocks not kept. A block that grows in its place is one block.
//
// This program defines the heap calls and the operators new and delete itself, so the libraries use
// them.
#include <dlfcn.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "driver_devmode/field_map.h"
#include "driver_devmode/qvdm.h"

namespace {

constexpr int kMost = 4096;
void* blocks[kMost];  // those that the operation has taken and not given back
int held = 0, taken = 0, dropped = 0;
bool counting = false;

void* Taken(void* block) {
    if (!counting || block == nullptr) return block;
    if (held == kMost) std::abort();
    blocks[held++] = block;
    ++taken;
    return block;
}

void Given(void* block) {
    for (int i = 0; counting && block != nullptr && i < held; ++i) {
        if (blocks[i] != block) continue;
        blocks[i] = blocks[--held];
        ++dropped;
        return;
    }
}

template <class Call>
Call* Next(Call* /*ours*/, const char* name) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    static auto* const next = Next(&HeapAlloc, "HeapAlloc");
    return Taken(next(heap, flags, bytes));
}

LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T bytes) {
    static auto* const next = Next(&HeapReAlloc, "HeapReAlloc");
    void* const resized = next(heap, flags, block, bytes);
    if (resized == block) return block;
    Given(block);
    return Taken(resized);
}

BOOL HeapFree(HANDLE heap, DWORD flags, LPVOID block) {
    static auto* const next = Next(&HeapFree, "HeapFree");
    Given(block);
    return next(heap, flags, block);
}

void* operator new(std::size_t bytes) {
    void* const block = std::malloc(bytes);
    if (block == nullptr) throw std::bad_alloc();
    return Taken(block);
}

void operator delete(void* block) noexcept {
    Given(block);
    std::free(block);
}

void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    operator delete(block);
}

namespace {

template <class Operation>
void Count(const char* name, const Operation& operation) {
    held = taken = dropped = 0;
    counting = true;
    operation();
    counting = false;
    std::printf("%s %d %d\n", name, taken, dropped);
}

}  // namespace

int main() {
    TQVDM settings;
    TQVDM target;
    // The first run makes things that a process makes only once. It also gives the names of the
    // rows.
    TXmlNode fields;
    settings.ToXmlNode(&fields);
    {
        TXmlNode first;
        target.FromXmlNode(&fields, &first);
    }
    TQVDM copy(settings);
    copy.DeviceName = copy.FormName = copy.Directory = copy.FileName = copy.Target =
        UnicodeString();
    TXmlNode written;
    TXmlNode previous;
    TXmlNode public_part;
    Count("decode", [&] { copy.Decode(); });
    Count("encode", [&] { settings.Encode(); });
    Count("to_xml", [&] { settings.ToXmlNode(&written); });
    Count("public_to_xml", [&] { DevModeToXmlNode(settings.GetDM(), &public_part); });
    Count("from_xml", [&] { target.FromXmlNode(&fields, &previous); });
    Count("from_xml_without_result", [&] { target.FromXmlNode(&fields, nullptr); });
    return 0;
}
