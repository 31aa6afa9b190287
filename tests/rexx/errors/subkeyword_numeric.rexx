numeric form
