#include "rig/loader/thread/context_api.h"

namespace rig {

namespace {

__thread ContextApi threadApi;

}  // namespace

ContextApi currentApi() { return threadApi; }
void setCurrentApi(ContextApi api) { threadApi = api; }

}  // namespace rig
