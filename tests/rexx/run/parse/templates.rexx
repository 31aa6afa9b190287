/* template forms */
parse value 'a b c' with x y; say x'|'y
parse value 'a b c' with x y z w; say x'|'y'|'z'|'w'|'
parse value 'abc' with x 2 y; say x y
parse value 'abc' with 2 x; say x
parse value 'a,b' with x ',' y; say x y
parse value 'a,b' with x ';' y; say x'|'y'|'
parse value 'abcdef' with 3 x +2 y; say x y
parse value 'abcdef' with 'c' x +1 y; say x y
parse value 'abcdef' with x 3 y 2 z; say x y z
x = 'q r'; parse var x a x; say a x
parse value 'A' with . b; say '['||b']'
p = 'x'; parse value 'axb' with a (p) b; say a b
parse upper value 'ab c' with x; say x
parse value '  lead  trail  ' with w1 rest; say '['w1']['rest']'
parse value 'abcdef' with 2 x 4 -1 y; say x y
n = 3; parse value '12345' with =(n) x; say x
parse value 'abcdef' with x +(n) y; say x y
parse value 'k=v' with key '=' val; say key val
parse numeric d f x; say d f x
parse version v .; say v
parse source os kind name ext dir called; say os kind name ext dir
parse value 'one' with; say 'empty template'
