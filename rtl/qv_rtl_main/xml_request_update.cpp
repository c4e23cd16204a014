#include <windows.h>

#include <winspool.h>

#include <utility>

#include "driver_devmode/pool_texts.h"
#include "driver_devmode/qvdm.h"
#include "driver_global/installation.h"
#include "mox_classes/memory/handles.h"
#include "mox_log/registry.h"
#include "printer_query/spooler.h"
#include "qv_rtl_main/request_vocabulary.h"
#include "qv_rtl_main/xml_request_handlers.h"

namespace {

using request::NameOf;

TXmlNode& ChildOf(TXmlNode& parent, const WCHAR* name) {
    TXmlNode* child = parent.FindChild(name, kUtf8);
    return child != nullptr ? *child : *parent.AddChild(name);
}

void UpdateGlobal(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    const System::TKeyHandle key(Mox::RegOpenToWrite(HKEY_LOCAL_MACHINE, kProductKey));
    if (!key) {
        messages.Error(TEXT("Cannot open the registry for global settings"), GetLastError());
        return;
    }
    TXmlNode& global = ChildOf(response, TEXT("global"));
    for (int i = 0; i < request.ChildCount(); ++i) {
        const TXmlNode& setting = *request.GetChild(i);
        const UnicodeString before = Mox::RegReadString(key.Get(), setting.FName, kMissingValue);
        if (!Mox::RegWriteString(key.Get(), setting.FName, setting.FValue)) {
            SetText(messages.Error(TEXT("Cannot write registry value"), GetLastError()),
                    TEXT("registry"), setting.FName);
        } else if (before != kMissingValue) {
            global.SetChild(setting.FName, before, kUtf8);
        }
    }
}

// Changes the settings that the printer has, or the defaults when it has none of the product's.
void UpdateSettings(const UnicodeString& name, TXmlNode& changes, TXmlNode& response,
                    TXmlMessages& messages) {
    const auto failed = [&](const WCHAR* text, DWORD code) {
        SetText(messages.Error(text, code), TEXT("printer"), name);
    };
    TW32StructData<DEVMODEW> current = GetGlobalDevMode(name);
    if (!current.IsSuccess()) {
        failed(TEXT("Cannot get global DEVMODE"), current.GetErrorCode());
        return;
    }
    TQVDM settings;
    if (!current.IsEmpty()) settings.SetDEVMODE(&current[0], current.Size());
    const driver_devmode::TDamagedTexts damaged(settings);

    auto printer = NewElement(TEXT("printer"));
    AddText(*printer, TEXT("name"), name);
    settings.FromXmlNode(&changes, printer->AddChild(TEXT("devmode")));
    Append(response, std::move(printer));
    for (const UnicodeString& text : damaged.Replaced(settings))
        SetText(messages.Warning(text), TEXT("printer"), name);
    for (const UnicodeString& text : driver_devmode::TextsWithoutRoom(settings))
        SetText(messages.Error(text + TEXT(". It is empty now")), TEXT("printer"), name);
    // The request may have changed the sizes that the block states, or its identifier.
    if (!settings.StatedSizeFits() || !settings.GetDM()->IsValid()) {
        failed(TEXT("Cannot set global DEVMODE"), ERROR_INVALID_DATA);
        return;
    }
    const auto stored = SetGlobalDevMode(name, settings.GetDM(), nullptr);
    if (!stored.IsSuccess()) failed(TEXT("Cannot set global DEVMODE"), stored.GetErrorCode());
}

void UpdatePrinter(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    const TXmlNode* name = request.FindChild(NameOf(TEXT("update/printer/name")), kUtf8);
    if (name == nullptr) {
        messages.Error(TEXT("No name node was found"));
        return;
    }
    TXmlNode* changes = request.FindChild(NameOf(TEXT("update/printer/devmode")), kUtf8);
    if (changes == nullptr) {
        SetText(messages.Warning(TEXT("Nothing to set")), TEXT("printer"), name->FValue);
        return;
    }
    UpdateSettings(name->FValue, *changes, response, messages);
}

struct TChange {
    const WCHAR* name;
    void (*apply)(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages);
};
constexpr TChange kChanges[] = {
    {NameOf(TEXT("update/global")), UpdateGlobal},
    {NameOf(TEXT("update/printer")), UpdatePrinter},
};
static_assert(request::AreAllBelow(TEXT("update"), kChanges));

}  // namespace

void AnswerUpdate(const TXmlNode& request, TXmlNode& response, TXmlMessages& messages) {
    for (int i = 0; i < request.ChildCount(); ++i) {
        const TXmlNode& child = *request.GetChild(i);
        for (const TChange& change : kChanges) {
            if (XmlNamesEqual(child.FName, change.name)) change.apply(child, response, messages);
        }
    }
}
