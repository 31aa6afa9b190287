address
address sh
address sh 'ls' '-l'
address 'ksh'
address value 'sh'
address (env) 'x'
numeric digits 5
numeric digits
numeric fuzz
numeric fuzz 1
numeric form scientific
numeric form engineering
numeric form value 'x'
numeric form (y)
trace
trace ?r
trace 'i'
trace value t
trace -1
trace (t)
