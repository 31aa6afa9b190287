say 'before'
trace s
say 'listed, not run'
if 1 then say 'then'
else do
  say 'else'
end
exit 3
