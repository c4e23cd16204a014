#include "xml/xml_pair.h"

#include <new>

#include "mox_classes/memory/process_heap.h"

void* TXmlBlock::operator new(std::size_t size) {
    void* block = System::TProcessHeap::New(static_cast<int>(size));
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void TXmlBlock::operator delete(void* block) noexcept {
    if (block != nullptr) System::TProcessHeap::Delete(block);
}
