// The run interface used by hosts: outcomes of EXIT, arguments, and what survives from one run to the next.
#include <gtest/gtest.h>

#include "os/os_process.h"
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
  EXPECT_EQ(run("'execio 1 diskr x'\n").rc, -3);  // a command of the function library, not built yet
  EXPECT_EQ(run("trace x\n").rc, -3);     // the debugger
  EXPECT_EQ(run("address sh 'exit 3'\nexit rc\n").rc, 3);
}

TEST(RexxRunApi, BuffersOfTheQueueOutliveARun) {
  paloma_init();
  EXPECT_EQ(run("queue 'low'; 'makebuf'; exit rc\n").rc, 1);
  EXPECT_EQ(run("queue 'high'; 'sentries'; exit rc\n").rc, 1);  // only the top buffer counts
  EXPECT_EQ(run("'dropbuf'; exit rc\n").rc, 0);
  EXPECT_EQ(run("'sentries'; exit rc\n").rc, 1);  // 'low' is back, 'high' went with its buffer
  EXPECT_EQ(run("'dropbuf'; exit rc\n").rc, 2);   // no buffer left
  paloma_init();
  EXPECT_EQ(run("'sentries'; exit rc\n").rc, 0);
}

namespace {

struct env_log {
  std::string commands;
};

int record_env(std::string_view command, void* user) {
  static_cast<env_log*>(user)->commands.append(command).append(";");
  return command == "fail" ? -2 : 7;
}

}  // namespace

TEST(RexxRunApi, HostEnvironmentsRegisterReplaceAndRemove) {
  paloma_init();
  env_log log;
  paloma_register_environment("HOSTED", record_env, true, &log);
  EXPECT_EQ(run("'one'; exit rc\n").rc, 7);  // the new current environment takes the program's commands
  EXPECT_EQ(run("address hosted 'two'; exit rc\n").rc, 7);
  EXPECT_EQ(run("signal on failure; 'fail'; exit 1; failure: exit rc\n").rc, -2);
  // A negative result with FAILURE off fires ERROR; with FAILURE on, FAILURE alone.
  EXPECT_EQ(run("signal on error; 'fail'; exit 1; error: exit 100 + rc\n").rc, 98);
  EXPECT_EQ(run("call on error; call on failure name f; 'fail'; exit 1; error: exit 2; f: say 'f'; return\n").rc, 1);
  EXPECT_EQ(log.commands, "one;two;fail;fail;fail;");
  paloma_register_environment("HOSTED", nullptr, false, nullptr);
  EXPECT_EQ(run("address hosted\n").rc, 56);  // removed: the run starts in the first row again
  EXPECT_EQ(run("'exit 4'; exit rc\n").rc, 4);
  EXPECT_EQ(log.commands, "one;two;fail;fail;fail;");
}

TEST(RexxRunApi, NamedShellsPutTheirVariableInFront) {
  paloma_init();
  ASSERT_EQ(os_set_env("TCSH", "exit 5;"), 0);
  EXPECT_EQ(run("address tcsh 'true'; exit rc\n").rc, 5);  // "exit 5; true"
  ASSERT_EQ(os_unset_env("TCSH"), 0);
  EXPECT_EQ(run("address tcsh 'exit 6'; exit rc\n").rc, 6);  // no variable: the command alone
}
