// The root of the class hierarchy of lists and streams.
#pragma once

#include "qv_api.h"

namespace System {

// Nothing but a virtual destructor, so that any object can be deleted through it. Assignment copies
// nothing.
class QV_API TObject {
  public:
    TObject() = default;
    TObject(const TObject&) = default;
    TObject& operator=(const TObject&) = default;
    virtual ~TObject();
};

}  // namespace System
