/* A call site that no label answered looks again once a routine file brings new labels into the run */
do i = 1 to 2
  say reverse('ab')
  if i = 1 then call lib_reverse
end
say result
