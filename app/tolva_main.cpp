// tolva: the editor.
#include "editor/startup.h"

int main(int argc, char** argv) { return tolva_main(argc, argv); }
