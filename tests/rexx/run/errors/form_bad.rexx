numeric form value 'big'
