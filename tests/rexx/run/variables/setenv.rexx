/* OPTION SETENV: "$" names mirror the process environment. */
option setenv
say $?TOLVA_SE_UNSET $TOLVA_SE_UNSET'|'
$TOLVA_SE_X = 'first'
say $?TOLVA_SE_X $TOLVA_SE_X
'echo "shell sees $TOLVA_SE_X"'
parse value 'second value' with $TOLVA_SE_X .
say $TOLVA_SE_X
address unix 'echo "shell sees $TOLVA_SE_X"'
$tolva_se_x = $tolva_se_x'!'
say $TOLVA_SE_X
