// The clipboard backends over fake wl-copy/wl-paste/xclip scripts that keep the text in a temp file, the choice of
// backend from the environment, the OSC 52 sequence, and the rectangular marker.
#include "os/os_clipboard.h"

#include <cstdlib>
#include <string>

#include "tests/os/test_util.h"

namespace {

// Sets environment variables for one test and puts the old values back.
class env_guard {
 public:
  void set(const char* name, const std::string& value) {
    keep(name);
    setenv(name, value.c_str(), 1);
  }
  void unset(const char* name) {
    keep(name);
    unsetenv(name);
  }
  ~env_guard() {
    for (auto& [name, value, had] : saved_) {
      if (had) setenv(name.c_str(), value.c_str(), 1);
      else unsetenv(name.c_str());
    }
  }

 private:
  void keep(const char* name) {
    const char* v = std::getenv(name);
    saved_.push_back({name, v ? v : "", v != nullptr});
  }
  struct saved {
    std::string name, value;
    bool had;
  };
  std::vector<saved> saved_;
};

void script(const std::string& path, const std::string& body) {
  ostest::write_file(path, "#!/bin/sh\n" + body);
  chmod(path.c_str(), 0755);
}

class clipboard : public ::testing::Test {
 protected:
  void SetUp() override {
    os_clip_force(-1);
    env.set("PATH", dir.path() + ":/usr/bin:/bin");
    env.set("XDG_RUNTIME_DIR", dir.path());
    env.unset("WAYLAND_DISPLAY");
    env.unset("DISPLAY");
    env.unset("TMUX");
    env.set("TERM", "dumb");
    store = dir / "store";
    // The fakes keep the clipboard in one file and the primary selection in another, as the real tools do.
    script(dir / "xclip",
           "f=" + store + "\n"
           "for a in \"$@\"; do [ \"$a\" = primary ] && f=" + store + ".primary; done\n"
           "for a in \"$@\"; do [ \"$a\" = -o ] && { cat \"$f\" 2>/dev/null; exit 0; }; done\n"
           "cat > \"$f\"\n");
    script(dir / "wl-copy", "f=" + store + "\n[ \"$1\" = --primary ] && f=" + store + ".primary\ncat > \"$f\"\n");
    script(dir / "wl-paste", "cat " + store + " 2>/dev/null\n");
  }
  void TearDown() override { os_clip_force(-1); }
  ostest::temp_dir dir;
  env_guard env;
  std::string store;
};

TEST_F(clipboard, backend_follows_the_environment_in_order) {
  EXPECT_EQ(os_clip_backend(), OS_CLIP_NONE);
  env.set("TERM", "xterm-256color");
  EXPECT_EQ(os_clip_backend(), OS_CLIP_OSC52);
  env.set("DISPLAY", ":0");
  EXPECT_EQ(os_clip_backend(), OS_CLIP_X11);
  env.set("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_EQ(os_clip_backend(), OS_CLIP_WAYLAND);
  // A display without its tool on PATH does not count.
  env.set("PATH", "/nonexistent");
  EXPECT_EQ(os_clip_backend(), OS_CLIP_OSC52);
  os_clip_force(OS_CLIP_NONE);
  EXPECT_EQ(os_clip_backend(), OS_CLIP_NONE);
  EXPECT_FALSE(os_clip_readable(OS_CLIP_OSC52));
  EXPECT_TRUE(os_clip_readable(OS_CLIP_X11));
}

TEST_F(clipboard, x11_and_wayland_round_trip_through_the_tools) {
  env.set("DISPLAY", ":0");
  ASSERT_TRUE(os_clip_put("one\ntwo\n"));
  EXPECT_EQ(ostest::read_file(store), "one\ntwo\n");
  std::string got;
  EXPECT_EQ(os_clip_get(got), 1);
  EXPECT_EQ(got, "one\ntwo\n");
  ASSERT_TRUE(os_clip_put("prim", true));
  EXPECT_EQ(ostest::read_file(store + ".primary"), "prim");
  EXPECT_EQ(ostest::read_file(store), "one\ntwo\n");  // the clipboard itself untouched

  env.set("WAYLAND_DISPLAY", "w");
  ASSERT_TRUE(os_clip_put("way"));
  EXPECT_EQ(os_clip_get(got), 1);
  EXPECT_EQ(got, "way");
  ostest::write_file(store, "");
  EXPECT_EQ(os_clip_get(got), 0);  // an empty clipboard is no text
}

TEST_F(clipboard, a_tool_that_hangs_or_fails_is_given_up) {
  env.set("DISPLAY", ":0");
  script(dir / "xclip", "sleep 5\n");
  std::string got;
  EXPECT_EQ(os_clip_get(got), -1);  // within the second, not five
  script(dir / "xclip", "exit 3\n");
  EXPECT_FALSE(os_clip_put("x"));
  EXPECT_EQ(os_clip_get(got), 0);  // a tool that answers with a fault and no text: the clipboard has none
  // No backend: nothing can be read or put.
  env.unset("DISPLAY");
  EXPECT_EQ(os_clip_get(got), -1);
  EXPECT_FALSE(os_clip_put("x"));
}

TEST_F(clipboard, osc52_sequence_is_base64_of_the_text) {
  EXPECT_EQ(os_clip_osc52("hello", 'c'), "\x1b]52;c;aGVsbG8=\x07");
  EXPECT_EQ(os_clip_osc52("ab", 'p'), "\x1b]52;p;YWI=\x07");
  EXPECT_EQ(os_clip_osc52("abc", 'c'), "\x1b]52;c;YWJj\x07");
  EXPECT_EQ(os_clip_osc52("", 'c'), "\x1b]52;c;\x07");
}

TEST_F(clipboard, marker_says_block_only_for_the_same_text) {
  os_clip_mark("ab\ncd", true);
  EXPECT_TRUE(os_clip_is_rect("ab\ncd"));
  EXPECT_FALSE(os_clip_is_rect("ab\ncD"));
  EXPECT_FALSE(os_clip_is_rect("ab\ncd\n"));
  os_clip_mark("ab\ncd", false);
  EXPECT_FALSE(os_clip_is_rect("ab\ncd"));
}

}  // namespace
