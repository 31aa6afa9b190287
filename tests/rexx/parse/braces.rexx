if a then { say 1; say 2 }
do i = 1 to 2; { nop }; end
{ x = 1 }
{}
