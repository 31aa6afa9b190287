// Screen splits: SCReen's forms and checks, C_SCRH, C_SCRV, C_SCRJ, and the rebuild after a resize.
#include "editor/screens.h"

#include "tests/editor/live_editor.h"

namespace {

class screens : public live_editor {
 protected:
  void SetUp() override {
    start(41, 120);  // 40 rows above the legend
    file_with({"alpha", "beta"}, "/tmp/scr.txt");
    xf_compose();
  }
  // top,left,height,width of every view
  std::string shapes() const {
    std::string s;
    for (const auto& v : xf_ring.views)
      s += std::to_string(v->top) + "," + std::to_string(v->left) + "," + std::to_string(v->height) + "," +
           std::to_string(v->width) + " ";
    return s;
  }
  void cursor_cell(int32_t view, int32_t row, int32_t col) {
    xf_place p;
    p.kind = XP_LINE;
    p.view = view;
    p.screen_line = row;
    p.screen_col = col;
    xf_set_cursor_place(p);
  }
};

TEST_F(screens, HorizontalVerticalAndSizedForms) {
  cmd("screen 3");
  EXPECT_EQ(shapes(), "1,1,13,120 14,1,13,120 27,1,14,120 ");
  cmd("screen 3 v");
  EXPECT_EQ(shapes(), "1,81,40,40 1,41,40,40 1,1,40,40 ") << "view 0 stands at the right";
  cmd("screen size 10 20");
  EXPECT_EQ(shapes(), "1,1,10,120 11,1,30,120 ") << "the last operand is not read";
  cmd("screen width 50 70");
  EXPECT_EQ(shapes(), "1,1,40,50 1,51,40,70 ");
  cmd("screen define 20 120 1 1 20 120 21 1");
  EXPECT_EQ(shapes(), "1,1,20,120 21,1,20,120 ");
  for (const auto& v : xf_ring.views) EXPECT_EQ(v->current_file, 0) << "every view shows the current file";
}

TEST_F(screens, RefusedShapesChangeNothing) {
  cmd("screen 2");
  std::string before = shapes();
  EXPECT_EQ(cmd("screen 8"), 1);
  EXPECT_EQ(last_msg(), "..... Screen 0: should have at least 6 lines");
  EXPECT_EQ(cmd("screen 4 v"), 1);
  EXPECT_EQ(last_msg(), "..... Screen 0: should have at least 38 columns");
  EXPECT_EQ(cmd("screen define 20 120 30 1"), 1);
  EXPECT_EQ(last_msg(), "..... Screen 0 out of bounds");
  EXPECT_EQ(cmd("screen define 20 120 1 1 10 60 5 5"), 1);
  EXPECT_EQ(last_msg(), "..... Screen 0 overlaps screen 1");
  EXPECT_EQ(cmd("screen x"), 1);
  EXPECT_EQ(last_msg(), "..... Invalid parameters");
  EXPECT_EQ(shapes(), before);
}

TEST_F(screens, SplitAndJoinAtTheCursor) {
  cursor_cell(0, 5, 10);
  EXPECT_EQ(cmd("c_scrh"), 1);
  EXPECT_EQ(last_msg(), "..... Screen would be too small");
  cursor_cell(0, 16, 10);
  cmd("c_scrh");
  EXPECT_EQ(shapes(), "1,1,15,120 16,1,25,120 ");
  cursor_cell(1, 20, 61);
  cmd("c_scrv");
  EXPECT_EQ(shapes(), "1,1,15,120 16,1,25,60 16,61,25,60 ");
  cursor_cell(2, 20, 70);
  cmd("c_scrj");
  EXPECT_EQ(shapes(), "1,1,15,120 16,1,25,120 ");
  cursor_cell(0, 3, 3);
  cmd("c_scrj");
  EXPECT_EQ(shapes(), "1,1,40,120 ");
}

TEST_F(screens, AResizeRebuildsTheRememberedSplit) {
  cmd("screen 2");
  xf_current_line() = 1;
  host->resize(31, 100);
  xf_scr.nb_rows = 31;
  xf_scr.nb_cols = 100;
  xf_relayout();
  EXPECT_EQ(shapes(), "1,1,15,100 16,1,15,100 ");
  EXPECT_EQ(xf_current_line(), 1) << "the first view's place is kept";
  cmd("screen size 10 5");
  xf_relayout();
  EXPECT_EQ(shapes(), "1,1,30,100 ") << "only the count forms are remembered";
}

}  // namespace
