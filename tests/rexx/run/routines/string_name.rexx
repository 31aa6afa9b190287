call 'f' 1
exit
f: say 'label reached'; return
