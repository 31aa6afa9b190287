address value 'no' || 'such'
