/* What a new session finds. */
trace off
'globalv list w s p pl i'
