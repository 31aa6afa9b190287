parse upper foo
