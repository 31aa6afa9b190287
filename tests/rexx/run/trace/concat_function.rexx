/* TRACE turned on by the TRACE function inside a chain of concatenations: the operators behind it are traced */
x = 'a' || trace('i') || 'b' || 'c'
say x
