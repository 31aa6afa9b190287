numeric digits 'x'
