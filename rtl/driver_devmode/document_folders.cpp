#include "driver_devmode/document_folders.h"

#include "mox_log/registry.h"

UnicodeString GetUserDocument(UnicodeString defaultPath) {
    const UnicodeString folder =
        Mox::ReadRegistry(HKEY_CURRENT_USER, kShellFoldersKey, TEXT("Personal"));
    return folder.Length() > 0 ? folder : defaultPath;
}

UnicodeString GetPublicDocument() {
    return Mox::ReadRegistry(HKEY_LOCAL_MACHINE, kShellFoldersKey, TEXT("Common Documents"));
}
