#include "mox_log/log_message.h"

#include <cstring>
#include <new>

#include "mox_classes/memory/memory.h"

namespace Mox {

TLogMsg* TLogMsg::Alloc() {
    void* block = System::GetMemory(sizeof(TLogMsg));
    if (block == nullptr) return nullptr;
    TLogMsg* message = new (block) TLogMsg();
    GetSystemTimeAsFileTime(&message->time);
    message->next = message;
    return message;
}

void TLogMsg::Free() {
    if (dataSize > 0 && data != nullptr) System::FreeMemory(data);
    this->~TLogMsg();
    System::FreeMemory(this);
}

void TLogMsg::ImportBinData() {
    if (dataSize >= 0) return;
    // The most negative int has no positive counterpart, and no block has that size.
    const int size = dataSize < -INT32_MAX ? 0 : -dataSize;
    void* copy = data != nullptr && size > 0 ? System::GetMemory(size) : nullptr;
    if (copy != nullptr) std::memcpy(copy, data, static_cast<std::size_t>(size));
    const bool lost = data != nullptr && copy == nullptr;
    data = copy;
    dataSize = lost ? 0 : size;
}

TLogMsg* Front(TLogMsg* last) {
    return last == nullptr ? nullptr : last->next;
}

void PushFrontLogMsg(TLogMsg*& list, TLogMsg* message) {
    if (list == nullptr) {
        message->next = message;
        list = message;
    } else {
        message->next = list->next;
        list->next = message;
    }
}

void PushBackLogMsg(TLogMsg*& list, TLogMsg* message) {
    PushFrontLogMsg(list, message);
    list = message;
}

TLogMsg* PopFrontLogMsg(TLogMsg*& list) {
    TLogMsg* first = Front(list);
    if (first == nullptr) return nullptr;
    if (first == list) {
        list = nullptr;
    } else {
        list->next = first->next;
    }
    first->next = first;
    return first;
}

void FreeAllLogMsg(TLogMsg*& list) {
    while (TLogMsg* message = PopFrontLogMsg(list)) message->Free();
}

}  // namespace Mox
