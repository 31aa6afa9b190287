iterate a + 1
