# Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
#   python list_boms.py "DESCRIPTOR"
# Wants the package pywin32, and a Python of the component's width.
# Not tried yet: it was written by the documentation of pywin32, where no Windows was at hand.
import sys

import pywintypes
import win32com.client

descriptor = sys.argv[1]

view = win32com.client.Dispatch("QorvaneMBomBill.BomView")
boms = view.GetBomLdgInfo(descriptor)
first = None
for i in range(1, boms.UBound + 1):
    bom = boms.Item(i)
    print(bom.Value("FBOMNumber"), bom.Value("FStatus"))
    if first is None:
        first = bom.Value("FInterID")

# An in/out argument comes back behind the result, where the type library is read.
update = win32com.client.Dispatch("QorvaneMBomBill.BomUpdate")
print("CheckBomUsed:", update.CheckBomUsed(descriptor, first, ""))

try:
    view.GetBomLdgInfo(descriptor, "no condition")
except pywintypes.com_error as error:
    number = error.excepinfo[5] if error.excepinfo else error.hresult
    print("Error: %08X" % (number & 0xFFFFFFFF))
