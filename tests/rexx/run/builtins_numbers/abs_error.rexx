say abs('x')
