/* ARG and PARSE ARG */
parse arg a b; say a'|'||b
arg x; say x
parse arg a, b; say a'|'||b'|'
