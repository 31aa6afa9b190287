/* PARSE VAR and PARSE VALUE whose templates assign to their own source, numbers and compound sources */
line = 'a b c'
parse var line w line
say w '|' line
s = 'x-y'
parse var s a '-' s
say a s
s = 'xx yy zz'
parse var s a s b
say a s b
s = 'xx yy zz'
parse var s a s 1 b
say a '|' s '|' b
v = 'one two'
parse value v with v rest
say v '|' rest
n = 12345
parse var n p 3 q
say p q n
c.1 = 'p q'
parse var c.1 x c.1
say x '|' c.1
do i = 1 to 3
  t = 'k' || i || '=v' || i 'tail'
  parse upper var t key '=' val more
  say key val more t
end
d = ';'
u = 'a;b;c'
parse var u f1 (d) f2 (d) f3
say f1 f2 f3 u
parse value 'left right' with l r
say l r
