// Shared set-up for the screen tests: a fresh library on a test host, and helpers to define fields.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "screen/as_read.h"
#include "screen/fs.h"
#include "screen/host/test_host.h"

class screen_test : public ::testing::Test {
 protected:
  void start(int lines = 24, int cols = 80) {
    host = std::make_unique<test_host>(lines, cols);
    fs_sethost(host.get());
    fs_reset();
    fsinit(0, nullptr);
    ASSERT_EQ(fsstatus(), 0);
  }
  void SetUp() override { start(); }
  void TearDown() override {
    fs_reset();
    fs_sethost(nullptr);
  }

  // One field: id, line, col, lines, cols, then optional type, intensity, colour, -, highlight, menu group, attr.
  int field(std::initializer_list<int> members) {
    std::vector<int> rec(members);
    rec.resize(14, 0);
    if (members.size() < 7) rec[6] = 1;  // normal intensity unless given
    return asrfmt(1, 14, rec.data());
  }
  static std::string text(int id) {
    auto s = ascget_char(id, 0);
    return s ? *s : std::string("<none>");
  }
  static std::string trimmed(int id) {
    auto s = ascget_char(id, 1);
    return s ? *s : std::string("<none>");
  }
  static void put(int id, const std::string& s) { ascput(id, static_cast<int>(s.size()), s.data()); }
  // Runs one read and returns its kind; value and modified count land in the members.
  int read() {
    int kind = -1;
    asread(kind, value, nmod);
    return kind;
  }
  static std::pair<int, int> cursor() {
    int id, line, col;
    asqcur(0, id, line, col);
    return {line, col};
  }
  std::unique_ptr<test_host> host;
  int value = 0, nmod = 0;
};
