// Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
//   cscript //nologo ListBoms.js "DESCRIPTOR"
// JScript passes copies, so what a method puts into an in/out argument (strInfo) is not seen here.
var descriptor = WScript.Arguments.Item(0);

var view = new ActiveXObject("QorvaneMBomBill.BomView");
var first;
for (var boms = new Enumerator(view.GetBomLdgInfo(descriptor)); !boms.atEnd(); boms.moveNext()) {
  var bom = boms.item();
  WScript.Echo(bom("FBOMNumber") + " " + bom("FStatus"));
  if (first === undefined) first = bom("FInterID");
}

var update = new ActiveXObject("QorvaneMBomBill.BomUpdate");
WScript.Echo("CheckBomUsed: " + update.CheckBomUsed(descriptor, first, ""));

try {
  view.GetBomLdgInfo(descriptor, "no condition");
} catch (error) {
  WScript.Echo("Error: " + (error.number >>> 0).toString(16).toUpperCase());
}
