// Tests of the field screen model: pages, field definition, content, attributes, queries, refresh.
#include "tests/screen/screen_fixture.h"

using screen_model = screen_test;

TEST(screen_lifecycle, calls_before_fsinit_and_twice) {
  test_host h;
  fs_sethost(&h);
  fs_reset();
  EXPECT_EQ(fserror(), "..... No error");
  int rec[5] = {1, 1, 1, 1, 10};
  EXPECT_EQ(asrfmt(1, 5, rec), -1);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "asrfmt : call fsinit() first");
  asfcol(1, 3);
  EXPECT_EQ(fserror(), "asfcol : call fsinit() first");
  int k, v, n;
  asread(k, v, n);
  EXPECT_EQ(k, ASR_QUIT);
  fsinit(0, nullptr);
  EXPECT_EQ(fsstatus(), 0);
  fsinit(0, nullptr);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "fsinit : secondary entrance forbidden");
  EXPECT_EQ(h.messages.back(), "fsinit : secondary entrance forbidden");
  fs_reset();
  fs_sethost(nullptr);
}

TEST_F(screen_model, quiet_mode_and_long_messages) {
  asfquiet(1);
  asfcol(99, 1);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "asfcol: field 99 does not exist.");
  EXPECT_TRUE(host->messages.empty());
  asfquiet(0);
  asfhlt(12345, 1);
  ASSERT_EQ(host->messages.size(), 1u);
  EXPECT_EQ(host->messages[0], "asfhlt: field 12345 does not exist");
  // a text beyond 160 characters is cut
  asfview(7);
  EXPECT_EQ(fserror(), "asfview : invalid parameter");
  EXPECT_LE(fserror().size(), 160u);
}

TEST_F(screen_model, pages_create_select_delete) {
  EXPECT_EQ(fscurpage(), 0);
  fspcrt(0, 0, 0, 0);
  EXPECT_EQ(fsstatus(), 2);
  EXPECT_EQ(fserror(), "fspcrt: Page 0 already exists.");
  fspcrt(3, 0, 0, 0);
  EXPECT_EQ(fsstatus(), 0);
  EXPECT_EQ(fscurpage(), 3);
  EXPECT_EQ(field({1, 2, 2, 1, 5}), 0);
  put(1, "page3");
  fspsel(0);
  EXPECT_EQ(fscurpage(), 0);
  EXPECT_EQ(asq_ff(1), 1);
  EXPECT_EQ(fserror(), "asq_ff: invalid field");
  fspsel(3);
  EXPECT_EQ(text(1), "page3");
  fspsel(9);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "fspdel: Page 9 not found.");
  fspdel(0);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "fspdel : page 0 cannot be destroyed");
  fspdel(8);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "fspdel: Page 8 not found.");
  fspdel(3);
  EXPECT_EQ(fsstatus(), 0);
  EXPECT_EQ(fscurpage(), 0);
  fspcrt(-2, 0, 0, 0);
  EXPECT_EQ(fsstatus(), 1);
  fspcrt(4, 0, 0, 0);
  field({1, 1, 1, 1, 3});
  fsterm();
  EXPECT_EQ(fscurpage(), 0);
  fspsel(4);
  EXPECT_EQ(fsstatus(), 28);
}

TEST_F(screen_model, asrfmt_argument_checks) {
  int rec[14] = {1, 1, 1, 1, 10};
  EXPECT_EQ(asrfmt(1, 4, rec), -1);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "asrfmt : invalid count number");
  EXPECT_EQ(asrfmt(1, 15, rec), -1);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(asrfmt(-1, 5, rec), -1);
  EXPECT_EQ(fsstatus(), 2);
  EXPECT_EQ(fserror(), "asrfmt : invalid n_fields number");
  EXPECT_EQ(asrfmt(0, 5, rec), -1);
  EXPECT_EQ(fsstatus(), 0);
  int two[10] = {1, 1, 1, 1, 5, 0, 1, 2, 10, 5};
  EXPECT_EQ(asrfmt(2, 5, two), -1);
  EXPECT_EQ(fsstatus(), 4);
  EXPECT_EQ(fserror(), "asrfmt: field 2 invalid");
  int dup[10] = {7, 1, 1, 1, 5, 7, 2, 1, 1, 5};
  EXPECT_EQ(asrfmt(2, 5, dup), -1);
  EXPECT_EQ(fsstatus(), 3);
  EXPECT_EQ(fserror(), "asrfmt: duplicate field 7");
  EXPECT_EQ(asq_ff(7), 1);  // nothing was defined
  EXPECT_EQ(fsstatus(), 28);
}

TEST_F(screen_model, placement_refusals) {
  struct row {
    std::vector<int> rec;
    const char* message;
  } rows[] = {
      {{5, 1, 81, 1, 2}, "as(x)fmt: Field 5: x1 = 81  nb_cols = 80."},
      {{5, 25, 1, 1, 2}, "as(x)fmt: Field 5: y1 = 25  nb_lines = 24."},
      {{5, -3, 1, 1, 2}, "as(x)fmt: Field 5: y1 = -3  nb_lines = 24."},
      {{5, 20, 1, 6, 2}, "as(x)fmt: Field 5: y2 = 25  nb_lines = 24."},
      {{5, 24, 80, 1, 3}, "as(x)fmt: Field 5: py = 25  nb_lines = 24."},
      {{5, 1, 70, 2, 20}, "as(x)fmt: Field 5: x2 = 89  nb_cols = 80."},
      {{5, 1, 1, -2, 20}, "as(x)fmt: Field 5: y2 = -2  nb_lines = 24."},
      {{5, 1, 1, 1, 2000000000}, "as(x)fmt: Field 5: py = 25000000  nb_lines = 24."},
  };
  for (auto& r : rows) {
    r.rec.resize(14, 0);
    EXPECT_EQ(asrfmt(1, 14, r.rec.data()), -1) << r.message;
    EXPECT_EQ(fsstatus(), 1) << r.message;
    EXPECT_EQ(fserror(), r.message);
    EXPECT_EQ(asq_ff(5), 1);  // the field does not exist afterwards
  }
}

TEST_F(screen_model, overlap_keeps_earlier_fields_and_placed_ones) {
  ASSERT_EQ(field({1, 2, 5, 2, 10}), 0);
  put(1, "keep me");
  asfcol(1, 5);
  // three records: the first is placed, the second overlaps field 1, the third is never placed
  int recs[15] = {2, 10, 1, 1, 5, 3, 3, 10, 1, 5, 4, 12, 1, 1, 5};
  EXPECT_EQ(asrfmt(3, 5, recs), -1);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "as(x)fmt: field 3 overlaps field 1");
  EXPECT_EQ(trimmed(1), "keep me");
  EXPECT_EQ(asq_ff(2), 2);
  asq_ff(3);
  EXPECT_EQ(fsstatus(), 28);
  asq_ff(4);
  EXPECT_EQ(fsstatus(), 28);
  int q[14];
  asqfld(0, 1, 14, q);
  EXPECT_EQ(q[7], 5);
  // a field may take the cells freed by one removed in the same call
  int swap[10] = {1, 0, 0, 0, 0, 9, 2, 5, 1, 4};
  EXPECT_EQ(asrfmt(2, 5, swap), 1);
  EXPECT_EQ(asq_ff(9), 2);
}

TEST_F(screen_model, replace_remove_and_indexes) {
  int recs[15] = {1, 1, 1, 1, 4, 2, 2, 1, 1, 4, 3, 3, 1, 1, 4};
  EXPECT_EQ(asrfmt(3, 5, recs), 2);
  put(3, "c");
  int remove[5] = {2, 0, 1, 1, 4};
  EXPECT_EQ(asrfmt(1, 5, remove), -1);
  EXPECT_EQ(fsstatus(), 0);
  EXPECT_EQ(asq_ff(3), 2);  // later entries moved down one place
  EXPECT_EQ(trimmed(3), "c");
  // the cells of field 3 still map to it: typing reaches it
  asfcur(3, 1, 1);
  int id, l, c;
  asqcur(1, id, l, c);
  EXPECT_EQ(id, 3);
  // replacing field 1 by a wider one on the same place
  int wide[5] = {1, 1, 1, 1, 40};
  EXPECT_EQ(asrfmt(1, 5, wide), 1);  // the old field 1 left, the new one goes to the end of the table
  int q[5];
  asqfld(0, 1, 5, q);
  EXPECT_EQ(q[4], 40);
}

TEST_F(screen_model, record_members_and_asqfld) {
  int rec[14] = {4, 3, 7, 2, 6, 1, 2, 90, 11, 3, 5, FA_KEYED, 13, 1};
  EXPECT_EQ(asrfmt(1, 14, rec), 0);
  int q[14];
  asqfld(0, 4, 14, q);
  int want[14] = {4, 3, 7, 2, 6, 1, 2, 63, 11, 3, 5, FA_KEYED, 13, 1};
  for (int i = 0; i < 14; ++i) EXPECT_EQ(q[i], want[i]) << i;
  int part[7] = {5, 10, 1, 1, 5, 2, 2};
  asrfmt(1, 7, part);
  asqfld(0, 5, 14, q);
  EXPECT_EQ(q[6], 2);
  EXPECT_EQ(q[7], 0);  // members behind the count are zero
  asqfld(1, 5, 14, q);
  EXPECT_EQ(fserror(), "asqfld : Invalid code");
  asqfld(0, 5, 15, q);
  EXPECT_EQ(fsstatus(), 2);
  EXPECT_EQ(fserror(), "asqfld : Invalid count");
  asqfld(0, 6, 3, q);
  EXPECT_EQ(fserror(), "asqfld: field 6 does not exist.");
}

TEST_F(screen_model, wrapping_field_reads_in_order) {
  // starts at the last column: continues at column 1 of the next line
  ASSERT_EQ(field({1, 3, 78, 1, 8}), 0);
  put(1, "abcdefgh");
  asrefresh();
  EXPECT_EQ(host->row(3).substr(77), "abc");
  EXPECT_EQ(host->row(4).substr(0, 5), "defgh");
  EXPECT_EQ(text(1), "abcdefgh");
  asfcur(1, 1, 5);
  EXPECT_EQ(cursor(), (std::pair<int, int>{4, 2}));
  int id, l, c;
  asqcur(1, id, l, c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(l, 1);
  EXPECT_EQ(c, 5);
  asfcur(1, 2, 1);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "asfcur : invalid specification");
  asfcur(1, 1, 9);
  EXPECT_EQ(fsstatus(), 1);
}

TEST_F(screen_model, content_get_and_put) {
  ASSERT_EQ(field({1, 1, 1, 1, 6}), 0);
  char buf[9];
  ascget(1, 8, buf);
  EXPECT_EQ(std::string(buf, 8), "        ");  // fresh field: null cells read as blanks
  uint16_t sh[8];
  ascget_short(1, 8, sh);
  EXPECT_EQ(sh[0], FS_NULL_CELL);
  EXPECT_EQ(sh[7], FS_NULL_CELL);
  put(1, "abcdefghij");
  EXPECT_EQ(text(1), "abcdef");
  ascput(1, 0, "");
  EXPECT_EQ(text(1), "      ");
  ascget_short(1, 1, sh);
  EXPECT_EQ(sh[0], 32);
  uint16_t two[2] = {'x', 'y'};
  ascput_short(1, 2, two);
  ascget_short(1, 4, sh);
  EXPECT_EQ(sh[1], 'y');
  EXPECT_EQ(sh[2], FS_NULL_CELL);
  EXPECT_EQ(ascput(2, 3, "abc"), -1);
  EXPECT_EQ(fserror(), "ascput_short: field 2 does not exist");
  ascget(3, 2, buf);
  EXPECT_EQ(fserror(), "ascget: field 3 does not exist");
}

TEST_F(screen_model, content_folding_modes_and_numbers) {
  int rec[14] = {1, 1, 1, 1, 10, 0, 1, 0, 0, 0, 0, 0, 0, 1};
  asrfmt(1, 14, rec);
  put(1, "  ab\tC ");
  char buf[10];
  ascget(1, 10, buf);
  EXPECT_EQ(std::string(buf, 10), "  AB\tC    ");
  EXPECT_EQ(*ascget_char(1, 0), "  ab\tC    ");
  EXPECT_EQ(*ascget_char(1, 1), "  ab\tC");
  EXPECT_EQ(*ascget_char(1, 2), "ab\tC");
  put(1, "  ");
  EXPECT_EQ(*ascget_char(1, 2), "");
  EXPECT_FALSE(ascget_char(5, 0).has_value());
  EXPECT_EQ(fserror(), "ascget_char: field 5 does not exist.");
  int n = 0;
  put(1, "  -42 ");
  EXPECT_EQ(ascget_int(1, n), 0);
  EXPECT_EQ(n, -42);
  put(1, "4x2");
  EXPECT_EQ(ascget_int(1, n), 1);
  put(1, "99999999999");
  EXPECT_EQ(ascget_int(1, n), 1);
  EXPECT_EQ(ascget_int(8, n), -1);
  EXPECT_EQ(fserror(), "ascget_int: field 8 does not exist.");
}

TEST_F(screen_model, asqmod_hands_over_in_order) {
  int recs[15] = {1, 1, 1, 1, 10, 2, 2, 1, 1, 10, 3, 3, 1, 1, 10};
  asrfmt(3, 5, recs);
  put(1, "ab  d");
  asfmod(1, 1);
  asfmod(3, 1);
  asfmod(2, 3);
  EXPECT_EQ(fserror(), "asfmod: Invalid parameter.");
  asfmod(4, 1);
  EXPECT_EQ(fserror(), "asfmod: field 4 does not exist.");
  int ids[1], sizes[1], used[1];
  EXPECT_EQ(asqmod(1, ids, sizes, used), 1);
  EXPECT_EQ(ids[0], 1);
  EXPECT_EQ(sizes[0], 10);
  EXPECT_EQ(used[0], 5);
  int ids3[3], sizes3[3], used3[3];
  EXPECT_EQ(asqmod(3, ids3, sizes3, used3), 1);  // the second call gets the rest
  EXPECT_EQ(ids3[0], 3);
  EXPECT_EQ(used3[0], 0);
  EXPECT_EQ(ids3[1], 0);
  EXPECT_EQ(asqmod(3, ids3, sizes3, used3), 0);
  asqmod(-1, ids, sizes, used);
  EXPECT_EQ(fserror(), "asqmod : count is negative");
}

TEST_F(screen_model, colours_cell_by_cell) {
  ASSERT_EQ(field({1, 1, 1, 1, 4, 0, 1, 5}), 0);
  int cols[3] = {70, -1, 9};
  asccol(1, 3, cols);
  int q[6];
  asqcol(1, 6, q);
  EXPECT_EQ(q[0], 6);  // 70 acts as 6
  EXPECT_EQ(q[1], 0);  // the field's colour reads as 0
  EXPECT_EQ(q[2], 9);
  EXPECT_EQ(q[3], 0);
  EXPECT_EQ(q[4], 0);  // beyond the field
  signed char b[1] = {7};
  asccolb(1, 1, b);
  asqcol(1, 1, q);
  EXPECT_EQ(q[0], 7);
  asscol(1);
  asqcol(1, 4, q);
  EXPECT_EQ(q[0] + q[1] + q[2] + q[3], 0);
  asccol(2, 1, cols);
  EXPECT_EQ(fserror(), "asccol: field 2 does not exist.");
  asccolb(2, 1, b);
  EXPECT_EQ(fserror(), "asccol: field 2 does not exist.");
  asfcol(1, 64 + 3);
  int rec[8];
  asqfld(0, 1, 8, rec);
  EXPECT_EQ(rec[7], 3);
}

TEST_F(screen_model, highlights_types_and_menus) {
  ASSERT_EQ(field({1, 1, 1, 1, 4}), 0);
  int h[2] = {2, -1};
  aschlt(1, 2, h);
  put(1, "abcd");  // ascput gives all cells the field's highlight back
  asrefresh();
  EXPECT_EQ(host->hlt_row(1).substr(0, 4), "0000");
  aschlt(1, 2, h);
  asrefresh();
  EXPECT_EQ(host->hlt_row(1).substr(0, 4), "2000");
  asshlt(1);
  asfhlt(1, 4);
  asrefresh();
  EXPECT_EQ(host->hlt_row(1).substr(0, 4), "4444");
  asftypall(2);
  int q[6];
  asqfld(0, 1, 6, q);
  EXPECT_EQ(q[5], 2);
  asftyp(3, 1);
  EXPECT_EQ(fserror(), "asftyp: field 3 does not exist.");
  asfmgd(3, 1);
  EXPECT_EQ(fserror(), "asfmgd: field 3 does not exist");
  asfint(3, 1);
  EXPECT_EQ(fserror(), "asfint: field 3 does not exist");
  const char* labels[2] = {"one", "two"};
  asfmenu(42, 3, 2, labels, nullptr, 1);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "asfmenu : field 000042 does not exist");
  asfmenu(1, 3, 2, labels, nullptr, 1);
  EXPECT_EQ(fsstatus(), 0);
}

TEST_F(screen_model, fsqury_and_cursor_queries) {
  int out[8];
  fsqury(0, 0, 4, out);
  EXPECT_EQ(out[2], 24);
  EXPECT_EQ(out[3], 80);
  fsqury(4, 0, 8, out);
  EXPECT_EQ(out[2], 8);
  EXPECT_EQ(out[3], 16);
  fsqury(2, 0, 4, out);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_EQ(fserror(), "fsqury : Invalid code");
  fsqury(0, 0, 5, out);
  EXPECT_EQ(fsstatus(), 2);
  EXPECT_EQ(fserror(), " fsqury: Invalid count");
  field({1, 5, 10, 3, 20});
  asfcur(1, 2, 4);
  int id, l, c;
  asqcur(1, id, l, c);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(l, 2);
  EXPECT_EQ(c, 4);
  asqcur(2, id, l, c);
  EXPECT_EQ(c, 24);
  asqcur(0, id, l, c);
  EXPECT_EQ(id, 0);
  EXPECT_EQ(l, 6);
  EXPECT_EQ(c, 13);
  asqcur(3, id, l, c);
  EXPECT_EQ(fsstatus(), 2);
  EXPECT_EQ(fserror(), "asqcur : Invalid code");
  asfcur(0, 25, 1);
  EXPECT_EQ(fserror(), "asfcur : invalid specification");
  asfcur(77, 1, 1);
  EXPECT_EQ(fsstatus(), 28);
  EXPECT_EQ(fserror(), "asfcur: field 77 not found.");
  host->messages.clear();
  asfcurq(1, 9, 9);
  EXPECT_EQ(fsstatus(), 1);
  EXPECT_TRUE(host->messages.empty());
  asqmou(0, id, l, c);
  EXPECT_EQ(l, 1);
  EXPECT_EQ(c, 1);
}

TEST_F(screen_model, settings_refuse_bad_values) {
  struct row {
    void (*set)(int);
    int bad;
    const char* message;
  } rows[] = {
      {asfacol, 2, "asfacol : invalid argument"}, {asfrem, 3, "asfrem : invalid parameter"},
      {asfup, 5, "asfup : invalid flagg"},        {asfupm, -1, "asfupm : invalid flagg"},
      {asfskip, 2, "asfmod : invalid flagg"},     {asfint2, 2, "asfint2 : invalid flagg"},
      {asfblk, 2, "asfblk : invalid mode"},       {asfapl, 2, "asfapl : invalid mode"},
      {asfrepeat, 2, "asfrepeat: invalid parameter"}, {asfveto, 3, "asfveto : Invalid parameter"},
  };
  for (const auto& r : rows) {
    r.set(r.bad);
    EXPECT_EQ(fsstatus(), 1) << r.message;
    EXPECT_EQ(fserror(), r.message);
  }
  asfmap(-1, 0, 0, 0);
  EXPECT_EQ(fserror(), "asfmap : invalid colormap entry");
  int d[4];
  asqdelay(d);
  EXPECT_EQ(d[0], 100000);
  EXPECT_EQ(d[3], 60000);
  asfdelay(1, 2, 3, 4);
  asqdelay(d);
  EXPECT_EQ(d[2], 3);
}

TEST_F(screen_model, refresh_paints_what_cells_show) {
  field({1, 1, 1, 1, 8});
  uint16_t cells[6] = {'a', 9, 0, FS_NULL_CELL, 'b' + 256, 12};
  ascput_short(1, 6, cells);
  field({2, 2, 1, 1, 4, 0, 0});  // intensity 0: nothing is shown
  put(2, "hide");
  asrefresh();
  EXPECT_EQ(host->row(1).substr(0, 8), "a.  b.  ");
  EXPECT_EQ(host->row(2).substr(0, 4), "    ");
  // only what changed is sent again
  long before = host->painted_cells;
  asrefresh();
  EXPECT_EQ(host->painted_cells, before);
  put(1, "z");
  asrefresh();
  EXPECT_GT(host->painted_cells, before);
  EXPECT_LE(host->painted_cells - before, 80);
  // asredraw repaints every line although nothing changed
  before = host->painted_cells;
  asredraw();
  EXPECT_GE(host->painted_cells - before, 24 * 80);
  fsalrm();
  fsalrm();
  asrefresh();
  EXPECT_EQ(host->beeps, 2);
}

TEST_F(screen_model, suspend_and_resume_repaints_whole) {
  field({1, 1, 1, 1, 5});
  put(1, "shown");
  asrefresh();
  fssuspend(1);
  EXPECT_TRUE(host->suspended);
  host->clear();  // others wrote over the display meanwhile
  fssuspend(0);
  EXPECT_FALSE(host->suspended);
  asrefresh();
  EXPECT_EQ(host->row(1).substr(0, 5), "shown");
}

TEST_F(screen_model, status_row_indicators) {
  asfinsert(1);
  asrefresh();
  EXPECT_EQ(host->row(25).substr(35, 8), "< INS > ");
  asfrdonly(1);
  EXPECT_EQ(host->row(25).substr(64, 14), "READ ONLY FILE");
  asfinsert(0);
  asfapl(1);
  EXPECT_EQ(host->row(25).substr(35, 8), "        ");
  EXPECT_EQ(host->row(25).substr(55, 3), "APL");
  asfapl(0);
  EXPECT_EQ(host->row(25).substr(55, 3), "   ");
}

TEST_F(screen_model, asclear_removes_every_field) {
  field({1, 1, 1, 1, 5});
  field({2, 2, 1, 1, 5});
  put(2, "text");
  asclear();
  asq_ff(1);
  EXPECT_EQ(fsstatus(), 28);
  asrefresh();
  EXPECT_EQ(host->row(2).substr(0, 5), "     ");
  EXPECT_EQ(field({3, 1, 1, 2, 5}), 0);  // the cells are free again
}

TEST(screen_big, page_of_3000_by_1000_cells) {
  test_host h(3000, 1000);
  fs_sethost(&h);
  fs_reset();
  fsinit(0, nullptr);
  std::vector<int> recs;
  for (int line = 1; line <= 3000; ++line)
    for (int f = 0; f < 4; ++f) {
      int r[7] = {(line - 1) * 4 + f + 1, line, f * 250 + 1, 1, 250, 0, 1};
      recs.insert(recs.end(), r, r + 7);
    }
  EXPECT_EQ(asrfmt(12000, 7, recs.data()), 11999);
  EXPECT_EQ(fsstatus(), 0);
  ascput(11999, 5, "hello");
  asfcur(11999, 1, 1);
  h.type("X");
  h.key(13);
  int kind, value, nmod;
  asread(kind, value, nmod);
  EXPECT_EQ(kind, ASR_ENTER);
  EXPECT_EQ(nmod, 1);
  EXPECT_EQ(ascget_char(11999, 1).value_or(""), "Xello");
  EXPECT_EQ(h.row(3000).substr(500, 5), "Xello");
  fs_reset();
  fs_sethost(nullptr);
}
