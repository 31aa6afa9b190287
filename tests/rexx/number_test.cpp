// Unit tests of the number rules: what is a number, its decimals, rounding through the text form, the text forms.
#include <gtest/gtest.h>

#include <limits>

#include "rexx/rx_value.h"

namespace {

std::string text(double x, int32_t decimals, int digits = 9, int form = 0) {
  rx_numeric n;
  n.digits = digits;
  n.form = form;
  std::string out;
  EXPECT_TRUE(rx_format_number(x, decimals, n, out));
  return out;
}

}  // namespace

TEST(RexxNumber, WhatIsANumber) {
  struct row {
    const char* text;
    bool is;
    double value;
  };
  const row rows[] = {
      {"1", true, 1},         {" 1 ", true, 1},     {"-1", true, -1},      {"- 1", true, -1},
      {"+.5", true, 0.5},     {"5.", true, 5},      {".5", true, 0.5},     {"1E", true, 1},
      {"1e5", true, 1e5},     {"1E+5", true, 1e5},  {"2e-3", true, 0.002}, {"  12.25", true, 12.25},
      {"", false, 0},         {".", false, 0},      {"E5", false, 0},      {"1 2", false, 0},
      {"1-", false, 0},       {"1e+", false, 0},    {"--1", false, 0},     {"abc", false, 0},
      {"1e999", false, 0},    {"-1e-5", false, 0},  {"1.2.3", false, 0},   {"0x10", false, 0},
      {"1e5e", false, 0},     {"1+2", false, 0},    {"\xe9", false, 0},    {"1\t", false, 0},
  };
  for (const row& r : rows) {
    double d = -99;
    EXPECT_EQ(rx_is_number(r.text, &d, nullptr), r.is) << '"' << r.text << '"';
    if (r.is) {
      EXPECT_DOUBLE_EQ(d, r.value) << r.text;
    }
  }
}

TEST(RexxNumber, DecimalsComeFromTheText) {
  struct row {
    const char* text;
    int32_t decimals;
  };
  const row rows[] = {{"1.50", 2}, {"1e5", 0}, {"1.5e1", 0}, {"007", 0}, {"2.", 0}, {"0.1234567890123456789", 15}};
  for (const row& r : rows) {
    int32_t dec = -7;
    ASSERT_TRUE(rx_is_number(r.text, nullptr, &dec)) << r.text;
    EXPECT_EQ(dec, r.decimals) << r.text;
  }
  rx_value v = rx_value::string("3.25");
  ASSERT_TRUE(rx_to_number(v));
  EXPECT_EQ(v.kind, RX_NUM);
  EXPECT_EQ(v.decimals, 2);
  rx_value s = rx_value::string("x");
  EXPECT_FALSE(rx_to_number(s));
  EXPECT_EQ(s.kind, RX_STR);
}

TEST(RexxNumber, RoundingGoesThroughTheTextForm) {
  EXPECT_DOUBLE_EQ(rx_round(1.0 / 3, 9), 0.333333333);
  EXPECT_DOUBLE_EQ(rx_round(2.0 / 3, 4), 0.6667);
  EXPECT_DOUBLE_EQ(rx_round(123456789012.0, 3), 123456789012.0);  // whole numbers stand
  EXPECT_DOUBLE_EQ(rx_round(1.0 / 3, 15), 1.0 / 3);                 // no rounding at 15
  EXPECT_DOUBLE_EQ(rx_round(0.1 + 0.2, 9), 0.3);
}

TEST(RexxNumber, TextForms) {
  EXPECT_EQ(text(1, 2), "1.00");
  EXPECT_EQ(text(10, 2), "10.0");
  EXPECT_EQ(text(100, 2), "100");
  EXPECT_EQ(text(1.5, 2), "1.5");
  EXPECT_EQ(text(6, 3), "6.000");
  EXPECT_EQ(text(5, 0), "5");
  EXPECT_EQ(text(1234567890, -1), "1.23456789E+9");
  EXPECT_EQ(text(1e-5, -1), "1E-5");
  EXPECT_EQ(text(1e100, -1), "1E+100");
  EXPECT_EQ(text(-2.5, -1), "-2.5");
  EXPECT_EQ(text(12346, -1, 4), "1.235E+4");
  EXPECT_EQ(text(1.0 / 3, -1, 15), "0.333333333333333");
  EXPECT_EQ(text(12345678901.0, -1, 9, 1), "12.3456789E+9");
  EXPECT_EQ(text(1e-5, -1, 9, 1), "10E-6");
  EXPECT_EQ(text(1.5e-8, -1, 9, 1), "15E-9");
  EXPECT_EQ(text(1e12, -1, 9, 1), "1E+12");  // a multiple of 3 stands
  std::string out;
  EXPECT_FALSE(rx_format_number(std::numeric_limits<double>::infinity(), -1, rx_numeric{}, out));
}

TEST(RexxNumber, PrintfFormsLoseTheirPadding) {
  EXPECT_EQ(rx_printf_number("%30.15g", 1.5), "1.5");
  EXPECT_EQ(rx_printf_number("%g", 1234567.0), "1.23457e+06");
}
