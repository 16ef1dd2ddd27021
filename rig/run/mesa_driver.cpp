#include "rig/run/mesa_driver.h"

#include <glob.h>

#include "rig/run/option_readers.h"

namespace rig {

namespace {

std::string lavapipe() {
    glob_t found = {};
    glob("/usr/share/vulkan/icd.d/lvp_icd*.json", 0, nullptr, &found);
    std::string file = found.gl_pathc > 0 ? found.gl_pathv[0] : "";
    globfree(&found);
    return file;
}

}  // namespace

std::vector<EnvironmentChange> driverEnvironment(const std::string& driver) {
    if (driver == "system") return {};
    if (driver != "zink") return {{"LIBGL_ALWAYS_SOFTWARE", "1"}, {"GALLIUM_DRIVER", driver}};
    const std::string vulkan = lavapipe();
    if (vulkan.empty()) {
        throw BadOption("--driver",
                        "zink needs the lavapipe Vulkan driver; install the package "
                        "mesa-vulkan-drivers");
    }
    return {{"MESA_LOADER_DRIVER_OVERRIDE", "zink"},
            {"GALLIUM_DRIVER", "zink"},
            {"LIBGL_ALWAYS_SOFTWARE", "1"},
            {"VK_ICD_FILENAMES", vulkan},
            {"VK_DRIVER_FILES", vulkan}};
}

}  // namespace rig
