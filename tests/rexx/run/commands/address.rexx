/* ADDRESS: naming, VALUE, one command in another environment, the swap of a bare ADDRESS */
address sh
'exit 0'
address 'unix'
address
'echo back in sh'
address
address
address value 'ksh'
address exec 'echo once in EXEC'
'echo still in KSH'
