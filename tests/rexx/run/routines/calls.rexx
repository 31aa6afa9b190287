/* SIGL, RESULT, arguments, RETURN from INTERPRET, EXIT inside a routine */
call show
say 'sigl' sigl
result = 'old'
call noresult
say symbol_check result
call args 'a', , 'c'
call args
call args ()
say twice('x')
call inter
say result
say 'function:' lab()
call ender
say 'not reached'
exit
show: say 'called from' sigl; return 'shown'
noresult: return
args: parse arg p, q, r
  say '['p']['q']['r']'
  return
twice: procedure
  parse arg s
  return s || s
inter: interpret 'return 42'
  say 'not here'
lab: return 'label'
ender: say 'ending'; exit 5
