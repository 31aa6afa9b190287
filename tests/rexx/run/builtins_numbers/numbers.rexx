say abs(-3) abs(2) sign(-2) sign(0) sign(5) sign('-0.5')
say max(1,5,3) min(4,2,9) max(-1) min(2,,1)
say queued()
queue 'a'
push 'b'
say queued()
pull x
say x queued()
