exit -1
