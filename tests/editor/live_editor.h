// Shared set-up for tests of the interactive editor: the screen library on the test host, a clean editor, and
// turns of the input cycle driven by scripted events.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "editor/compose.h"
#include "editor/input.h"
#include "editor/keys.h"
#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/test_host.h"
#include "tests/editor/test_support.h"

class live_editor : public ::testing::Test {
 protected:
  void start(int rows = 24, int cols = 80, bool ispf = false) {
    host = std::make_unique<test_host>(rows, cols);
    fs_sethost(host.get());
    fs_reset();
    fsinit(0, nullptr);
    ASSERT_EQ(fsstatus(), 0);
    xf_state_reset();
    xf_screen_reset();
    xf_input_reset();
    xf_keys_reset();
    xf_run.batch = 0;
    xf_run.work_dir = "/tmp";
    if (ispf) xf_set.mode_command_ispf = xf_set.mode_prefix_ispf = 1;
    xfini(rows, cols);
  }
  void TearDown() override {
    fs_reset();
    fs_sethost(nullptr);
    xf_state_reset();
  }
  // One turn of the interactive loop on the scripted events: compose, read, run the key, run what is queued.
  void turn(bool compose = true) {
    if (compose) xf_compose();
    xfread(xf_run.work_dir);
    xf_key_step(xf_run.work_dir);
    while (xfcom(xf_run.work_dir)) {
    }
  }
  // Ends a read with a key that has no definition (Ctrl+F4), so that a turn returns after served events.
  void end_read() { host->key(FSK_F1 + 3, FSM_CTRL, true); }
  // The screen row (1-based) that shows a line, 0 when none does.
  int row_of(int32_t line) const {
    const xf_view_fields& vf = xf_scr.views[0];
    for (const auto* t : {&vf.upper, &vf.lower})
      for (const xf_row& r : *t)
        if (!r.shadow && r.line == line) return xf_ring.views[0]->top + r.view_row - 1;
    return 0;
  }
  // The screen column of a 0-based column of the text (the prefix area and its gap come first).
  int col_of(int32_t column) const { return xf_scr.views[0].text_col + column - xf_scr.views[0].first_col; }
  std::unique_ptr<test_host> host;
};
