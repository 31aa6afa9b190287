say translate('abc') translate('abc','x','a') translate('abcd','xy','abc','-') '['translate('aa','12')']'
say translate('aba','xy','aa')
say xrange('a','e') length(xrange()) c2d_free(xrange('fe'x,'01'x))
exit
c2d_free: procedure
  parse arg s
  out = ''
  do i = 1 to length(s)
    out = out (pos(substr(s, i, 1), xrange()) - 1)
  end
  return strip(out)
