/* Compound symbols and their stems, with odd tails. */
a.b.c = 1
x. = 0
x.1.2 = a..b
.lead = 'x'
say a.b. a.. !w.?. _.1e2 #.$.@
say stem.f(1) 'q'.r
