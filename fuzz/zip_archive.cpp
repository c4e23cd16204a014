// The tool's reader of ZIP archives: what it gives has the stated size, or a fault is told.
#include "base/zip_reader.h"

#include "base/exit_code.h"
#include "support/input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
    const qv::ZipReader archive({reinterpret_cast<const char*>(data), size});
    for (const qv::ZipReader::Entry& entry : archive.Entries()) {
        const qv::ZipReader::Content content = qv::ZipReader::Read(entry);
        fuzz::Require(content.bytes.size() <= entry.size, "no more than is stated");
        fuzz::Require(content.bytes.size() == entry.size || !content.fault.empty(), "told");
    }
    return 0;
} catch (const qv::Failure&) {
    return 0;
}
