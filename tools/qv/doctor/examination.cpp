#include "doctor/examination.h"

#include <windows.h>

#include "base/files.h"
#include "base/host.h"
#include "driver_devmode/document_folders.h"
#include "driver_global/installation.h"
#include "mox_classes/text/sysutils.h"
#include "os_xp/user_name.h"
#include "qv_rtl_main/runtime_version.h"
#include "xml/xml_doc.h"
#include "xml/xml_source_location.h"

namespace qv {

namespace {

std::string VersionText(int version) {
    return std::to_string(version / 1000000) + "." + std::to_string(version / 1000 % 1000) + "." +
           std::to_string(version % 1000);
}

// A document of its own, so that the one in use stays as it is.
Json ExamineXml(const std::string& file, const std::string& bytes, Problems& problems) {
    TXmlDoc document;
    try {
        document.Parse(bytes.data(), static_cast<int>(bytes.size()));
    } catch (const UnicodeString&) {
        // The document keeps the reason.
    }
    const int size = static_cast<int>(bytes.size());
    const UnicodeString fault = DescribeXmlFault(document, bytes.data(), size, nullptr);
    if (fault.IsEmpty()) return {{"state", "parses"}};
    problems.push_back("the resource file '" + file + "' is broken: " + Lines(fault));
    return {{"state", "broken"}, {"fault", Lines(fault)}};
}

void AppendValue(std::string& text, const std::string& name, const Json& value, int indent) {
    const std::string margin(static_cast<std::size_t>(indent), ' ');
    if (value.is_array() || value.is_object()) {
        if (value.empty()) return;
        text += margin + name + ":\n";
        for (const auto& item : value.items()) {
            if (value.is_object()) {
                AppendValue(text, item.key(), item.value(), indent + 2);
                continue;
            }
            AppendValue(text, "-", item.value(), indent + 2);
        }
        return;
    }
    if (value.is_null()) return;
    const std::string shown = value.is_string() ? value.get<std::string>() : value.dump();
    text += margin + name + (name == "-" ? " " : ": ");
    for (const char c : shown) text += c == '\n' ? "\n" + margin + "  " : std::string(1, c);
    text += "\n";
}

}  // namespace

Json ExamineLibrary(Problems& problems) {
    const std::string version = VersionText(QVRtlVersion());
    if (QVRtlVersion() != QV_RTL_VERSION) {
        problems.push_back("the library is version " + version + ", the tool " +
                           std::string(QV_RTL_VERSION_TEXT));
    }
    const HostFacts facts = GetHostFacts();
    Json section = {{"tool", QV_RTL_VERSION_TEXT},   {"library", version},
                    {"library file", facts.library}, {"system", OneLine(GetOSInfo())},
                    {"machine", facts.machine},      {"user", OneLine(::GetUserNameW(false))}};
    if (!facts.root.empty()) section["host root"] = facts.root;
    const RegistryState registry = ExamineRegistryStore();
    if (!registry.damage.empty()) problems.push_back("the registry: " + registry.damage);
    if (!registry.old_files.empty()) section["taken over by the registry"] = registry.old_files;
    return section;
}

Json ExaminePaths() {
    return {{"log file", OneLine(GetPrinterLogFile())},
            {"resource file", OneLine(GetInstalledResourceFile())},
            {"installation", OneLine(GetInstallPath())},
            {"user's documents", OneLine(GetUserDocument(UnicodeString()))},
            {"public documents", OneLine(GetPublicDocument())},
            {"temporary files", OneLine(Sysutils::GetTempPathW())},
            {"settings", OneLine(UnicodeString(TEXT("HKLM\\")) + kProductKey)}};
}

Json ExamineResource(Problems& problems) {
    const UnicodeString files[] = {GetInstalledResourceFile(), kFallbackResourceFile};
    for (const UnicodeString& wide : files) {
        if (!Sysutils::FileExists(wide)) continue;
        const std::string file = ToUtf8(wide);
        Json section = {{"file", OneLine(wide)}};
        try {
            section.update(ExamineXml(file, ReadAll(file), problems));
        } catch (const Failure& failure) {
            problems.emplace_back(failure.what());
            section.update({{"state", "cannot be read"}, {"fault", failure.what()}});
        }
        return section;
    }
    problems.push_back("there is no resource file: neither '" + OneLine(files[0]) + "' nor '" +
                       OneLine(files[1]) + "'");
    return {{"file", OneLine(files[0])}, {"state", "missing"}};
}

Json Examine() {
    Problems problems;
    Json examination;
    examination["versions"] = ExamineLibrary(problems);
    examination["paths"] = ExaminePaths();
    examination["log"] = ExamineLog(problems);
    examination["resource"] = ExamineResource(problems);
    examination["registry"] = ExamineRegistry();
    examination["printers"] = ExaminePrinters(problems);
    examination["problems"] = problems;
    return examination;
}

std::string ExaminationText(const Json& examination) {
    std::string text;
    for (const auto& section : examination.items()) {
        if (section.key() == "problems" && section.value().empty()) {
            text += "problems: none\n";
        } else if (section.value().is_array() && section.key() != "problems") {
            // A list of things: each begins with its name.
            text += section.key() + ":\n";
            for (const Json& entry : section.value()) {
                text += "  " + entry.begin()->get<std::string>() + "\n";
                for (auto value = std::next(entry.begin()); value != entry.end(); ++value)
                    AppendValue(text, value.key(), *value, 4);
            }
        } else {
            AppendValue(text, section.key(), section.value(), 0);
        }
    }
    return text;
}

}  // namespace qv
