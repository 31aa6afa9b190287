if a then say 1
if a then say 1; else say 2
if a
then say 1
else say 2
if a then
  say 1
else
  say 2
if a then; else b
if a then if b then c; else d
if a = 1 then do
  say 'one'
end
else if a = 2 then nop
else say 'other'
if a then
