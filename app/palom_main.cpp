// palom: the stand-alone REXX runner. For now it lexes and parses a program and reports its syntax errors.
#include <cstdio>
#include <cstring>
#include <string>

#include "rexx/paloma.h"

namespace {

const char usage[] =
    "usage: palom [-dump-tree | -dump-tokens] FILE [ARGS...]\n"
    "  Reads the REXX program FILE, lexes and parses it, and reports syntax errors.\n"
    "  -dump-tree    print the parsed program tree (one statement a line) on standard output\n"
    "  -dump-tokens  print the lexer's finished tokens on standard output\n"
    "Exit status: 0 when the program parses; the error number for a syntax error; 254 for a lexical error;\n"
    "255 when FILE cannot be read.\n";

void write_out(std::FILE* f, const std::string& s) { std::fwrite(s.data(), 1, s.size(), f); }

}  // namespace

int main(int argc, char** argv) {
  int arg = 1;
  bool dump_tree = false, dump_tokens = false;
  for (; arg < argc && argv[arg][0] == '-' && argv[arg][1] != '\0'; ++arg) {
    if (std::strcmp(argv[arg], "-dump-tree") == 0) {
      dump_tree = true;
    } else if (std::strcmp(argv[arg], "-dump-tokens") == 0) {
      dump_tokens = true;
    } else {
      std::fprintf(stderr, "palom: unknown option \"%s\"\n%s", argv[arg], usage);
      return 1;
    }
  }
  if (arg >= argc) {
    std::fputs(usage, stderr);
    return 1;
  }
  std::string path = argv[arg];
  paloma_init();
  paloma_load loaded = paloma_load_file(path);
  if (loaded.rc != 0) {
    write_out(stderr, loaded.message);
    return loaded.rc & 0xFF;  // exit status is the run's code modulo 256
  }
  if (dump_tokens) write_out(stdout, paloma_dump_tokens(*loaded.program));
  if (dump_tree) write_out(stdout, paloma_dump_tree(*loaded.program));
  return 0;
}
