// The pass-through: every GL operation goes to the driver's entry of its name.
#pragma once

#include "interception/Impl.h"

namespace android {

class PLUGIN_API DefaultImplV2 : public Impl {
public:
    DefaultImplV2();
    explicit DefaultImplV2(gl_hooks_t* driverTable);
    ~DefaultImplV2() override;

#define GL_ENTRY(result, name, parameters, arguments) result name parameters override;
#include "platform/gl_entries.in"
};

}  // namespace android
