#include "GameImpl/AnyProgram/ScaledGl.h"

#include <new>

namespace android::any {

ScaledGl::ScaledGl(std::shared_ptr<ShareGroup> newGroup) : group(std::move(newGroup)) {}

ScaledGl* ScaledGl::make(std::shared_ptr<ShareGroup> group) {
    auto* made = new (std::nothrow) ScaledGl(std::move(group));
    if (made == nullptr) return nullptr;
    made->binding = newBinding(made);
    if (made->binding != nullptr) return made;
    delete made;
    return nullptr;
}

void ScaledGl::abandon() {
    abandoned = true;
    if (current) return;
    deleteBinding(binding);
    delete this;
}

bool ScaledGl::drawsTo(EGLSurface surface) const {
    return drawStand.exists() && drawStand.surface->handle == surface;
}

}  // namespace android::any
