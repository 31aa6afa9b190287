option foo
