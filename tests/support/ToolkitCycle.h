// A test fixture for tests that register clients: each test starts from an unregistered
// toolkit, and whatever a test leaves registered is shut down and the ring restarted.
#pragma once

#include "core/TarqToolkit.h"
#include "core/TqObject.h"

#include <gtest/gtest.h>

class ToolkitCycle : public ::testing::Test {
protected:
    void TearDown() override {
        TarqToolkit::shutDownApp();
        TqObject::startUp();
    }
};
