trace r
parse value 'alpha beta gamma' with first . last
say first last
