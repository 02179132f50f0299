def judge(*a): pass
