x = `ls` `pwd`
