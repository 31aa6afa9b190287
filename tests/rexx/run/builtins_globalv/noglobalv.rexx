/* After OPTION NOGLOBALV the word is a program for the system, which has none of that name. */
option noglobalv
trace off
'globalv set x 1 2>/dev/null'; say rc
