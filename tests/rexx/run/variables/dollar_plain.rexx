/* Without OPTION SETENV a "$" name is a plain variable. */
option unsetenv
$A = 1
say $A $?A
