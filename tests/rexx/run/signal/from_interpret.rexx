say 'start'
interpret 'x = 1;' 'signal there'
say 'not shown'
there: say 'there' sigl x
