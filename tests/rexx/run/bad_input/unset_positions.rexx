say unset1
x = unset2; say x
say a.unset3
say unset4 || '!'
do v in unset5; say v; end
parse var unset6 w; say w
signal value unset7
