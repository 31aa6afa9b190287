do
  say 'simple'
end
do 3; say 'x'; end
do forever; leave; end
do i = 1 to 3 by 2 for 5; end i
do i = 1 for 5 to 3; end
do j = 10 by -1; iterate j; end j
do w in 'a b c'; say w; end w
do while x < 3; x = x + 1; end
do until x; end
do k = 1 to n while ok; end
do n + 1; end
