// The object behind a handle of OpenPrinterW. Does not change after its construction. Any thread.
#pragma once

#include <windows.h>

#include <string>

#include "base/handles.h"

namespace host {

class OpenPrinter : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kPrinter;
    OpenPrinter(std::u16string key, std::u16string name, bool may_administer)
        : HandleObject(kKind),
          key_(std::move(key)),
          name_(std::move(name)),
          may_administer_(may_administer) {}
    // The name of the printer's key, and the name under which the printer is listed.
    const std::u16string& Key() const { return key_; }
    const std::u16string& Name() const { return name_; }
    bool MayAdminister() const { return may_administer_; }

  private:
    const std::u16string key_, name_;
    const bool may_administer_;
};

}  // namespace host
