/* the case-blind comparisons and the length operators (single-byte operator characters) */
say 'ABC' ­ 'abc'
say 'ABC' ­ 'abd'
say 'ABC' \­ 'abd'
say ' Ab ' ­ 'aB'
say ½'abcd'
say 'x' ½ 'abc'
say ½ 12.50
