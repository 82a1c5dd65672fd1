#!/bin/bash
# tools/wine-gdb stops in the component, in a program that calls it through COM, and shows file and line of each frame.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
file=src/view/BomView.cpp
line=$(grep -n 'SELECT ISNULL(COUNT(\*),0) AS FEcnCount' "$file" | cut -d : -f 1)
[[ $line ]] || die "the statement is not in $file any more"
said=$(PRESET=x64-debug timeout 240 tools/wine-gdb --built -batch -ex "break ${file##*/}:$line" -ex continue -ex backtrace -ex kill \
  component_tests --gtest_filter=BomListsTest.TellsWhetherThereIsAnyChange 2>&1) || die "exit code $?: $said"
# It stands at the line, in the method that COM's dispatching has called for the test.
for frame in "#0 .*/$file:$line" '#[0-9]* .*mbom::BomView::ExistsEcnBill .*/src/view/BomView.cpp:' \
  '#[0-9]* .*com::DispatchTable::Call .*/com/DispatchTable.cpp:' '#[0-9]* .*TestBody .*/tests/src/view/BomListsTest.cpp:'; do
  grep "^$frame" <<<"$said" >/dev/null || die "no frame \"$frame\": $said"
done
