# Each target is a script in tools/; they install what is missing and build what is out of date themselves.
targets = demo test test-server soak coverage bench build package reference site clean format lint
.PHONY: $(targets)

$(targets):
	@tools/$@
