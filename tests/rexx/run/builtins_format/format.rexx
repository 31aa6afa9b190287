/* Simple form: places before and after the point, rounding, signs. */
say '['format('3',4)']' '['format('1.73',4,0)']' '['format('1.73',4,3)']' '['format('-.76',4,1)']'
say '['format('3.03',4)']' '['format(' - 12.73',,4)']' '['format(' - 12.73')']' '['format('0.000')']'
say '['format('9.996',,2)']' '['format('-0.004',,2)']' '['format('0.5',,0)']' '['format('-0.5',,0)']' '['format('0.4',,0)']'
say '['format('-1',2)']' '['format('1.50')']' '['format('0.000001234')']' '['format(7, 3, 2)']'
/* Exponential form: the trigger, exponent places, rounding that carries. */
say '['format('12345.73',,,2,2)']' '['format('12345.73',,3,,0)']' '['format('1.234573',,3,,0)']'
say '['format('12345.73',,,3,6)']' '['format('1234567e5',,3,0)']' '['format('1.5e-20')']'
say '['format('1.0000001',,,2,3)']' '['format('9.9999e12',,2)']' '['format('-1e10',4,1,3)']'
/* The digit string is first rounded to NUMERIC DIGITS. */
numeric digits 5
say '['format('123.456789')']' '['format('1234567')']' '['format('1.23456789',,8)']'
numeric digits 9
numeric form engineering
say '['format('12345.73',,,,2)']' '['format('12.5',,,2,0)']' '['format('0.0001234',,,,1)']'
