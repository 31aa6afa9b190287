/* A base that does not exist gives no storage; OPTION NOGLOBALV hands the command to the system. */
trace off
option setenv
home = $GLOBALVHOME
$GLOBALVHOME = home'/missing'
'globalv set x 1'; say 'no root' rc
'mkdir' home'/other'
$GLOBALVHOME = home'/other'
'globalv set x 1'; say 'new root' rc
'globalv list x'
'test -d' home'/other/palom.globalv/lasting'; say 'lasting made' rc
