call './plain_text'
