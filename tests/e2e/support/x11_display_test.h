#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/run_program.h"
#include "support/window_client_process.h"
#include "support/xvfb_display.h"

namespace brisko::testing {

// One Xvfb for the test suite, with DISPLAY pointing at it, and the window clients of each test
// (ended after the test).
class X11DisplayTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        display_ = new XvfbDisplay();
        ::setenv("DISPLAY", display_->name().c_str(), 1);
    }
    static void TearDownTestSuite() {
        delete display_;
        display_ = nullptr;
    }
    void TearDown() override { clients_.clear(); }

    static XvfbDisplay& display() { return *display_; }

    WindowClientProcess& startClient(const std::string& program = windowClientPath()) {
        clients_.push_back(std::make_unique<WindowClientProcess>(program, display_->name()));
        return *clients_.back();
    }

    // The built program on this display.
    static ProgramResult brisko(const std::vector<std::string>& args, const std::string& stdinText = "") {
        return runProgram(programPath(), args, stdinText, {{"DISPLAY", display_->name()}});
    }

private:
    static inline XvfbDisplay* display_ = nullptr;
    std::vector<std::unique_ptr<WindowClientProcess>> clients_;
};

}  // namespace brisko::testing
