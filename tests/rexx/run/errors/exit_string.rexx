exit 'abcd'
