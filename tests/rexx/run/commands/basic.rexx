/* host commands through the shell: RC, failure, a missing program, the backquote form */
'echo hello from the shell'
say 'rc' rc
'exit 3'
say 'rc' rc
'no_such_program_here 2>/dev/null'
say 'rc' rc
text = `"printf 'one\r\ntwo\n\nthree\n'"`
say '['text']'
none = `'true'`
say '['none']'
both = `'echo out; echo err >&2; exit 9'`
say '['both'] rc' rc
'true &'
say 'background rc' rc
sayx 'echo sayx runs'
say 'rc' rc
