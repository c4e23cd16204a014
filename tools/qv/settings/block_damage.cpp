#include "settings/block_damage.h"

#include <cstring>

namespace qv {

namespace {

constexpr int kSmallestBlock = offsetof(DEVMODEW, dmFields) + sizeof(DWORD);

void AddStringDamage(const SettingsBlock& block, std::vector<std::string>& found) {
    QV_DEVMODE& bytes = block.Block();
    const struct {
        const char* name;
        short offset;
    } strings[] = {{"exOut.Directory", bytes.exOut.DirectoryOffset},
                   {"exOut.FileName", bytes.exOut.FileNameOffset},
                   {"exRun.Target", bytes.exRun.TargetOffset}};
    TQVDM reader(&bytes);
    UnicodeString text;
    for (const auto& s : strings) {
        if (reader.ReadString(text, s.offset)) continue;
        found.push_back(std::string(s.name) + " has the offset " + std::to_string(s.offset) +
                        ", where no string ends inside the pool");
    }
}

}  // namespace

std::vector<std::string> SizeDamage(const SettingsBlock& block) {
    if (block.Size() < kSmallestBlock)
        return {"the block has " + std::to_string(block.Size()) + " bytes, too few to be one"};
    const int stated = block.Block().dmSize + block.Block().dmDriverExtra;
    if (stated <= block.Size() && block.Block().dmSize >= kSmallestBlock) return {};
    return {"the block has " + std::to_string(block.Size()) + " bytes and says that they are " +
            std::to_string(block.Block().dmSize) + " + " +
            std::to_string(block.Block().dmDriverExtra)};
}

std::vector<std::string> ProductDamage(const SettingsBlock& block) {
    const QV_DEVMODE& bytes = block.Block();
    if (block.Size() < QV_DEVMODE::Size()) {
        return {"the block has " + std::to_string(block.Size()) + " bytes, not " +
                std::to_string(QV_DEVMODE::Size())};
    }
    std::vector<std::string> found;
    if (bytes.dmSize != QV_DEVMODE_EXTRA::kPublicSize)
        found.push_back("dmSize is " + std::to_string(bytes.dmSize) + ", not 220");
    if (bytes.dmDriverExtra < QV_DEVMODE_EXTRA::kExtraSize) {
        found.push_back("dmDriverExtra is " + std::to_string(bytes.dmDriverExtra) + ", below 4180");
    }
    if (std::memcmp(bytes.exID, QV_DEVMODE().exID, sizeof(bytes.exID)) != 0)
        found.emplace_back("exID is not the product's identifier");
    if (bytes.exVersion < QV_DEVMODE_EXTRA::kOldestVersion)
        found.push_back("exVersion is " + std::to_string(bytes.exVersion) + ", below 261");
    AddStringDamage(block, found);
    return found;
}

}  // namespace qv
