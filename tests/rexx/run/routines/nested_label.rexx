do 1
inner: say 'in'
end
call inner
