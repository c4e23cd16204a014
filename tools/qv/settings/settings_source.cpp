#include "settings/settings_source.h"

#include "base/files.h"
#include "mox_classes/text/sysutils.h"
#include "settings/block_damage.h"

namespace qv {

namespace {

using Kind = SettingsSource::Kind;

SettingsSource MakeSource(Kind kind, const std::string& name, SettingsBlock block) {
    return {kind, name, std::move(block), {}, {}, {}};
}

SettingsSource FromText(const std::string& name, const std::string& bytes) {
    SettingsSource source = MakeSource(Kind::kText, name, SettingsBlock());
    SettingsText text = ParseSettings(bytes);
    source.faults = std::move(text.faults);
    if (text.is_damaged) source.damage.emplace_back("some lines cannot be read");
    for (const Assignment& a : text.assignments) {
        const std::string reason = source.block.Set(*a.field, a.text);
        if (reason.empty()) {
            source.assignments.push_back(a);
        } else {
            source.faults.push_back(
                {a.line, NameOf(*a.field), "'" + NameOf(*a.field) + "': " + reason});
        }
    }
    const std::string reason = source.block.Finish();
    if (!reason.empty()) source.faults.push_back({0, "", reason});
    return source;
}

// A block with the product's mark must be complete and valid. A block of another driver only needs
// all its bytes.
void FindDamage(SettingsSource& source, bool is_product) {
    source.damage = SizeDamage(source.block);
    source.is_foreign = source.damage.empty() && !is_product && !source.block.IsProduct();
    if (source.damage.empty() && !source.is_foreign) source.damage = ProductDamage(source.block);
}

SettingsSource FromFile(const std::string& name) {
    const std::string bytes = ReadAll(name);
    if (IsSettingsText(bytes)) return FromText(name, bytes);
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    SettingsSource source = MakeSource(Kind::kBlock, name, SettingsBlock({data, bytes.size()}));
    // Only the block itself says which driver it belongs to.
    FindDamage(source, source.block.Size() == QV_DEVMODE::Size());
    return source;
}

}  // namespace

SettingsSource SourceOfPrinter(const Printer& printer) {
    SettingsSource source =
        MakeSource(Kind::kPrinter, ToUtf8(printer.name), RequireUserSettings(printer.name));
    FindDamage(source, printer.IsProduct());
    return source;
}

bool SettingsSource::Has(const Field& field) const {
    if (kind != Kind::kText) return block.Has(field);
    return std::ranges::find(assignments, &field, &Assignment::field) != assignments.end();
}

int SettingsSource::LineOf(const Field& field) const {
    const auto found = std::ranges::find(assignments, &field, &Assignment::field);
    return found == assignments.end() ? 0 : found->line;
}

Json SettingsSource::Description() const {
    return {{kind == Kind::kPrinter ? "printer" : "file", ToUtf8(FromUtf8(name))}};
}

SettingsSource OpenSource(const std::string& name) {
    if (name == kStandardStream || Sysutils::FileExists(FromUtf8(name))) return FromFile(name);
    try {
        return SourceOfPrinter(FindPrinter(FromUtf8(name)));
    } catch (const Failure& failure) {
        throw Failure(std::string(failure.what()) + " (and no file has that name)", failure.Code());
    }
}

}  // namespace qv
