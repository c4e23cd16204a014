// What OpenPrinterW gives a handle for.
#pragma once

#include <windows.h>

#include <string>

#include "base/handles.h"

namespace host {

class OpenPrinter : public HandleObject {
  public:
    static constexpr HandleKind kKind = HandleKind::kPrinter;
    OpenPrinter(std::u16string name, bool may_administer)
        : HandleObject(kKind), name_(std::move(name)), may_administer_(may_administer) {}
    const std::u16string& Name() const { return name_; }
    bool MayAdminister() const { return may_administer_; }

  private:
    const std::u16string name_;
    const bool may_administer_;
};

}  // namespace host
