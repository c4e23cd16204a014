#include "driver_global/installation.h"

#include <memory>

#include "driver_devmode/document_folders.h"
#include "mox_classes/memory/module_static.h"
#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/registry.h"

namespace {

UnicodeString ProductValue(const WCHAR* name) {
    return Mox::ReadRegistry(HKEY_LOCAL_MACHINE, kProductKey, name);
}

UnicodeString PrinterValue(const UnicodeString& printer, const WCHAR* name) {
    return Mox::ReadRegistry(HKEY_LOCAL_MACHINE,
                             Sysutils::ConfirmPathString(kPrintersKey) + printer, name);
}

UnicodeString Or(const UnicodeString& value, const UnicodeString& fallback) {
    return value.Length() > 0 ? value : fallback;
}

// The printer's own value; else the product's default; else `fallback`.
UnicodeString PrinterSetting(const UnicodeString& printer, const WCHAR* name,
                             const WCHAR* default_name, const WCHAR* fallback) {
    const UnicodeString own = PrinterValue(printer, name);
    return own.Length() > 0 ? own : Or(ProductValue(default_name), fallback);
}

UnicodeString DescribeOS() {
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    UnicodeString text;
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version))) {
        return text.sprintf(TEXT("Unknown - GetVersonEx() failed: %s"),
                            Mox::GetSysError(GetLastError(), true));
    }
    const WCHAR* service_pack = version.szCSDVersion;
    return text.sprintf(TEXT("%lu.%lu build %lu [%s] %s (%u.%u)"), version.dwMajorVersion,
                        version.dwMinorVersion, version.dwBuildNumber, TEXT("AMD64"), service_pack,
                        version.wServicePackMajor, version.wServicePackMinor);
}

}  // namespace

UnicodeString GetInstallPath() {
    return ProductValue(TEXT("InstallPath"));
}

UnicodeString GetInstalledResourceFile() {
    UnicodeString folder = GetInstallPath();
    if (folder.Length() == 0) {
        folder = Sysutils::GetEnvExpanded(TEXT("%ProgramFiles%\\Halvorn\\Vantrel"));
    }
    return Sysutils::ConfirmPathString(folder) + TEXT("qv_res.xml");
}

UnicodeString GetPrinterLanguage() {
    return Or(ProductValue(TEXT("Language")), TEXT("en"));
}

UnicodeString GetPrinterLocale(UnicodeString printer) {
    return PrinterSetting(printer, TEXT("Locale"), TEXT("DefaultLocale"), TEXT("gl"));
}

UnicodeString GetPrinterLogFile() {
    const UnicodeString configured = ProductValue(TEXT("Logfile"));
    if (configured.Length() > 0) return configured;
    const UnicodeString documents = GetPublicDocument();
    if (documents.Length() > 0) {
        return Sysutils::ConfirmPathString(documents) + TEXT("ORLO\\orlo.log");
    }
    const UnicodeString temporary = Sysutils::GetEnvExpanded(TEXT("%temp%"));
    return Sysutils::ConfirmPathString(temporary) + TEXT("orlo.log");
}

UnicodeString GetPrinterPost(UnicodeString printer, UnicodeString* params) {
    UnicodeString program =
        PrinterSetting(printer, TEXT("Rasterizer"), TEXT("DefaultRasterizer"), TEXT("qv_post.exe"));
    if (!Sysutils::FileExists(program) && program.Pos(TEXT("\\")) == 0) {
        // A bare name would be looked for in other folders by whoever starts it.
        const UnicodeString folder = Sysutils::ConfirmPathString(GetInstallPath());
        program = Or(folder, TEXT("\\")) + program;
    }
    if (params != nullptr) {
        *params = PrinterSetting(printer, TEXT("RasterizerParams"), TEXT("DefaultRasterizerParams"),
                                 TEXT("-d {spoolfile} -t {docname} -p {printername} -j {jobid} "
                                      "-a {application}"));
    }
    return program;
}

UnicodeString GetOSInfo() {
    static const UnicodeString& info =
        System::KeepUntilUnload(std::make_unique<UnicodeString>(DescribeOS()));
    return info;
}
