/* Groups: a select with a verb behind it holds for that command only; a select alone stays. */
trace off
'globalv set k unnamed-value'
'globalv select alpha set k alpha-value'; say 'one-shot' rc
'globalv list k'
'globalv select alpha'; say 'select' rc
'globalv list k'
'globalv set j 2'
/* A verb as the first word of select goes back to "unnamed". */
'globalv select set k changed'; say 'select verb' rc
'globalv list k'
'globalv select beta set b 1'
'globalv grplist'
/* get with no names takes every value of the group. */
'globalv select alpha get'; say k j
/* grpstack: a null line, then the groups, the first at the head. */
'globalv grpstack'; say 'grpstack' rc queued()
do queued(); parse pull g; say '['g']'; end
/* purge in a select empties that group; alone, every group. */
'globalv select alpha purge'; say 'purge group' rc
'globalv grplist'
'globalv purge'; say 'purge all' rc
'globalv grplist'
'globalv list k'
