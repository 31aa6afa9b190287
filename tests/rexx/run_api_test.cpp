// The run interface used by hosts: outcomes of EXIT, arguments, and what survives from one run to the next.
#include <gtest/gtest.h>

#include "rexx/paloma.h"

namespace {

paloma_outcome run(const std::string& text, const std::vector<std::string>& args = {}) {
  paloma_load loaded = paloma_load_string(text, "api.rexx");
  EXPECT_EQ(loaded.rc, 0) << loaded.message;
  if (loaded.rc != 0) return paloma_outcome{-100, false, {}};
  return paloma_run(*loaded.program, args, "LINUX COMMAND api .rexx \"\" api");
}

}  // namespace

TEST(RexxRunApi, ExitGivesCodeAndText) {
  paloma_init();
  paloma_outcome a = run("exit 3.50\n");
  EXPECT_EQ(a.rc, 3);
  EXPECT_TRUE(a.has_result);
  EXPECT_EQ(a.result, "3.5");  // formatted: 3.50 shows as 3.5
  paloma_outcome b = run("exit 'abcd'\n");
  EXPECT_EQ(b.rc, 'a' | 'b' << 8 | 'c' << 16 | 'd' << 24);
  EXPECT_EQ(b.result, "abcd");
  paloma_outcome c = run("x = 1\n");
  EXPECT_EQ(c.rc, 0);
  EXPECT_FALSE(c.has_result);
  paloma_outcome d = run("exit 007\n");
  EXPECT_EQ(d.result, "7");  // a number's text is its formatted form
}

TEST(RexxRunApi, ArgumentsAndSource) {
  paloma_init();
  EXPECT_EQ(run("parse arg a, b, c; exit a || '/' || b || '/' || c\n", {"x y", "z"}).result, "x y/z/");
  EXPECT_EQ(run("parse source s; exit s\n").result, "LINUX COMMAND api .rexx \"\" api");
  EXPECT_EQ(paloma_source_text("/a/b/prog.rexx"), "LINUX COMMAND prog .rexx /a/b/ prog");
  EXPECT_EQ(paloma_source_text("noext"), "LINUX COMMAND noext \"\" \"\" noext");
}

TEST(RexxRunApi, QueueOutlivesARunButNotInit) {
  paloma_init();
  EXPECT_EQ(run("queue 'kept'; x = 1\n").rc, 0);
  EXPECT_EQ(run("parse pull line; exit line\n").result, "kept");
  EXPECT_EQ(run("queue 'dropped'\n").rc, 0);
  paloma_init();
  EXPECT_EQ(run("x = 'no'; exit x\n").result, "no");
  EXPECT_EQ(run("exit v\n").result, "V");  // variables never pass from one run to the next
}

TEST(RexxRunApi, RunTimeErrorsAndUnavailableFeatures) {
  paloma_init();
  EXPECT_EQ(run("x = 1 / 0\n").rc, 51);
  EXPECT_EQ(run("'a host command'\n").rc, -3);
  EXPECT_EQ(run("address sh\n").rc, -3);
}
