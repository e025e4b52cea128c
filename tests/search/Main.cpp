// Runs the tests of the logic on a machine of their own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/core/Place.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

namespace velmora {

Place& ThePlace() {
    static Place place;
    return place;
}

} // namespace velmora

int main(int argc, char** argv) {
    velmora::ThePlace();
    qputenv("VELMORA_WORKER", SEARCH_TEST_WORKER);
    const QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
