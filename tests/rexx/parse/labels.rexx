start: say 'x'
a.b:
'Mixed Case':
START:
do
  inner: nop
end
Later: say 'y'; Again: ; 'Str': exit
