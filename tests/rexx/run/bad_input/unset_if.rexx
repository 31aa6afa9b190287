if unset10 then nop
