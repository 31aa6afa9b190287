x = f()
exit
f: return
