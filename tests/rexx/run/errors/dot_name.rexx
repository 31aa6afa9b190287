say .abc
