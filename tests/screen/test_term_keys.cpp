// The terminal host's decoding as pure functions, for what a terminal rarely sends: malformed and unknown
// control sequences, forms terminfo lacks, and the byte <-> glyph table. Keys as typed are tested on a pty.
#include <gtest/gtest.h>

#include "screen/as_read.h"
#include "screen/host/host.h"
#include "screen/host/term_keys.h"

namespace {

constexpr uint16_t S = FSM_SHIFT, C = FSM_CTRL, A = FSM_ALT;

TEST(screen_term_keys, control_sequences) {
  struct row {
    const char* body;
    term_csi::kind_t kind;
    term_key key;
  };
  const row rows[] = {
      {"13;5u", term_csi::key, {13, C}},          // Ctrl+Enter, kitty
      {"13;2u", term_csi::key, {13, S}},          // Shift+Enter
      {"9;5u", term_csi::key, {9, C}},            // Ctrl+Tab
      {"27;5u", term_csi::key, {27, C}},          // Ctrl+Esc
      {"97;6u", term_csi::key, {'a', C | S}},     // Ctrl+Shift+a
      {"127;5u", term_csi::key, {8, C}},          // Ctrl+Backspace
      {"97;5:1u", term_csi::key, {'a', C}},       // an explicit press
      {"97;5:3u", term_csi::none, {}},            // a release: the host makes its own
      {"27;5;13~", term_csi::key, {13, C}},       // modifyOtherKeys
      {"27;6;65~", term_csi::key, {'a', C | S}},
      {"27;2;9~", term_csi::key, {9, S}},
      {"?1u", term_csi::kitty_answer, {}},
      {"I", term_csi::focus_in, {}},
      {"O", term_csi::focus_out, {}},
      {"200~", term_csi::paste_begin, {}},
      {"201~", term_csi::paste_end, {}},
      {"1;8A", term_csi::key, {FSK_UP, C | S | A}},  // forms terminfo may lack
      {"1;5D", term_csi::key, {FSK_LEFT, C}},
      {"1;3P", term_csi::key, {FSK_F1, A}},
      {"3;5~", term_csi::key, {127, C}},
      {"15;2~", term_csi::key, {FSK_F1 + 4, S}},
      {"24;8~", term_csi::key, {FSK_F1 + 11, C | S | A}},
      {"5;3~", term_csi::key, {FSK_PGUP, A}},
      {"99~", term_csi::none, {}},
      {"1;x5u", term_csi::none, {}},
      {">1u", term_csi::none, {}},
      {"2J", term_csi::none, {}},
      {"", term_csi::none, {}},
      {"9999999999u", term_csi::none, {}},
  };
  for (const auto& r : rows) {
    term_csi got = term_parse_csi(r.body);
    EXPECT_EQ(got.kind, r.kind) << r.body;
    if (r.kind == term_csi::key) {
      EXPECT_EQ(got.k, r.key) << r.body;
    }
  }
}

TEST(screen_term_keys, sgr_mouse_reports) {
  term_csi r = term_parse_csi("<0;12;5M");
  EXPECT_EQ(r.kind, term_csi::mouse);
  EXPECT_EQ(r.button, 0);
  EXPECT_EQ(r.x, 12);
  EXPECT_EQ(r.y, 5);
  EXPECT_FALSE(r.release);
  r = term_parse_csi("<20;300;40m");
  EXPECT_EQ(r.kind, term_csi::mouse);
  EXPECT_EQ(r.button, 20);
  EXPECT_EQ(r.x, 300);
  EXPECT_EQ(r.y, 40);
  EXPECT_TRUE(r.release);
  for (const char* bad : {"<0;12M", "<0;1;2;3M", "<0;1;2X", "0;1;2M", "<a;1;2M"})
    EXPECT_EQ(term_parse_csi(bad).kind, term_csi::none) << bad;
}

TEST(screen_term_keys, glyphs_and_their_bytes) {
  EXPECT_EQ(term_glyph('A'), U'A');
  EXPECT_EQ(term_glyph(0xe9), U'\u00e9');
  EXPECT_EQ(term_glyph(0x80), U'\u20ac');
  EXPECT_EQ(term_glyph(0x9f), U'\u0178');
  const char32_t substitute = term_glyph(0x01);
  EXPECT_NE(substitute, U'\x01');
  EXPECT_EQ(term_glyph(0x81), substitute);
  EXPECT_EQ(term_glyph(0x7f), substitute);
  EXPECT_EQ(term_byte_of(U'\u20ac'), 0x80);
  EXPECT_EQ(term_byte_of(U'\u2603'), -1);
  // No control byte reaches the terminal, and every byte with a glyph of its own comes back from it.
  for (int b = 0; b < 256; ++b) {
    char32_t g = term_glyph(static_cast<uint8_t>(b));
    EXPECT_GE(g, U' ') << b;
    EXPECT_NE(g, U'\x7f') << b;
    if (g != substitute) {
      EXPECT_EQ(term_byte_of(g), b) << b;
    }
  }
}

}  // namespace
