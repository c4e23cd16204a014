// Version resources of PE files: what is found lies inside the block that was asked for.
#include <windows.h>
#include <winver.h>

#include <memory>

#include "printer_query/versions.h"
#include "support/input.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::WriteFile("image.dll", {data, size});
    const UnicodeString name = fuzz::FileName("image.dll");
    FormatFileVersion(name, TEXT("%d.%d.%d.%d"));
    const DWORD bytes = GetFileVersionInfoSizeW(name.t_str(), nullptr);
    if (bytes == 0) return 0;
    const auto block = std::make_unique<BYTE[]>(bytes);
    fuzz::Require(GetFileVersionInfoW(name.t_str(), 0, bytes, block.get()), "the size fits");
    fuzz::Require(!GetFileVersionInfoW(name.t_str(), 0, bytes - 1, block.get()), "a byte short");
    for (const WCHAR* path :
         {TEXT("\\"), TEXT("\\VarFileInfo\\Translation"), TEXT("\\StringFileInfo"),
          TEXT("\\StringFileInfo\\040904B0\\CompanyName")}) {
        void* value = nullptr;
        UINT count = 0;
        if (!VerQueryValueW(block.get(), path, &value, &count)) continue;
        const auto* first = static_cast<const BYTE*>(value);
        fuzz::Require(first >= block.get() && first + count <= block.get() + bytes, "inside");
    }
    return 0;
}
