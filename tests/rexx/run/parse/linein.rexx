/* LINEIN tells an empty line from the end of the input */
parse linein x; say '['||x']' rc
parse linein x; say '['||x']' rc
parse linein x; say '['||x']' rc
