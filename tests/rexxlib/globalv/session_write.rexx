/* Values at the three lifetimes. */
trace off
'globalv set w working'
'globalv sets s session'
'globalv setp p lasting'
'globalv setlp pl  a lasting line'
say rc
