/* EXIT inside a function ends the run at once: the rest of the expression and the SAY do not run */
say 'start'
say f() g()
exit 1
f: exit 3
g: say 'g ran'; return 'g'
