numeric digits 16
