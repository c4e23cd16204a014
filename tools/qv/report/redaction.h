// Takes names of users, machines and documents out of texts, each name being replaced by the same
// placeholder wherever it stands: user-1, machine-1, document-1.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

// Two passes: first every text is learnt from, then every text is rewritten. Names are compared
// without the case of ASCII letters.
class Redaction {
  public:
    enum class Kind { kUser, kMachine, kDocument };

    void AddName(Kind kind, std::string_view name);
    // Finds names where they are known to stand: behind the names of a job's members and tags
    // (pUserName, pMachineName, pDocument, docname ...), in the folders of users, in shares.
    void Learn(std::string_view text);
    // A name counts where no letter or digit stands right beside it.
    std::string Apply(std::string_view text) const;

    int Count(Kind kind) const { return counts_[static_cast<std::size_t>(kind)]; }

  private:
    void LearnMembers(std::string_view text);
    void LearnFolders(std::string_view text);
    void LearnShares(std::string_view text);

    std::map<std::string, std::string> stand_ins_;  // by the name in lower case
    // The lengths of the names that begin with a byte, the longest first.
    std::array<std::vector<std::size_t>, 256> lengths_;
    std::array<int, 3> counts_{};
};

}  // namespace qv
