/* a command that prints megabytes: to standard output through the shell, and captured by a backquote */
'head -c 3000000 /dev/zero | tr "\\000" x | wc -c'
big = `'head -c 3000000 /dev/zero | tr "\\000" y'`
say ½ big
say big[2999999:3000001] || '|'
