select
end
