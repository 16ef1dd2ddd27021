#include <gtest/gtest.h>

#include "tests/support/host.h"
#include "tests/unit/load_log.h"

// What the library logged while it was loaded.
const std::string& loadLog() {
    static const std::string* const text = new std::string(host::takeLog());
    return *text;
}

int main(int argc, char** argv) {
    host::reserveProcessName(argv);
    loadLog();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
