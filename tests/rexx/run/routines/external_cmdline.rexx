/* A program started with a list of arguments: ARG(n,'x') gives those arguments, ARG(n,'c') the command's words */
option noload
call ext_cmdline 'a b', , 'c'
say 'rc' result
