/* every form of DO */
do i = 1 to 3; say i; end
do i = 3 to 1 by -1; say i; end
do i = 1 to 2 by 0.5; say i; end
do i = 1 to 3; i = 10; end; say i
do i = 1 by 0 for 3; say 'by0' i; end
do 3; say 'x'; end
do 0; say 'never'; end
n = 0; do forever; n = n + 1; if n = 4 then leave; end; say n
do w in 'a b  c'; say w; end
i = 0; do while i < 3; i = i + 1; end; say i
i = 0; do until i >= 3; i = i + 1; end; say i
do i = 1 to 10 while i < 3; say 'w' i; end
do i = 1 until i = 2; say 'u' i; end
do i = 1.50 to 2; say i; end
do a.1 = 1 to 2; say a.1; end
do i = 1 to 3 for 2; say 'for' i; end
say i
do i = 1 to 3; say 'named' i; end i
