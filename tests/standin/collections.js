// A JScript client's view of the collections: default members and Enumerator. It says PASS when it got to its end.
var failures = 0;

function expect(what, actual, expected) {
  if (typeof actual !== typeof expected || actual !== expected) {
    failures++;
    WScript.Echo("FAIL " + what + ": " + actual + ", not " + expected);
  }
}

// What an Enumerator meets, each element as `text` says it.
function walk(collection, text) {
  var all = "";
  for (var each = new Enumerator(collection); !each.atEnd(); each.moveNext()) all += text(each.item()) + ";";
  return all;
}

function itself(value) { return value; }

var connection = new ActiveXObject("ADODB.Connection");
connection.Open("Provider=Embedded;Data Source=:memory:jscript");

// Wine's JScript cannot assign to dictionary("FKey"), so the dictionary is a row that the component made.
var source = "Provider=Embedded;Data Source=build\\demo\\factory.db;User ID=16401;Language=en";
var dictionary = new ActiveXObject("QorvaneMBomBill.BomView").GetBomList(source)(1);
expect("the default member", dictionary("fkey"), "ga");
expect("Enumerator of a Dictionary", walk(dictionary, itself).indexOf("FType;FRelative;FKey;FText;"), 0);
expect("Enumerator of an empty Dictionary", walk(new ActiveXObject("ruvo10.Dictionary"), itself), "");

var vector = new ActiveXObject("ruvo10.Vector");
vector.Add("a");
vector.Add(dictionary);
vector.Add(7);
expect("UBound", vector.UBound, 3);
expect("Enumerator of a Vector", walk(vector, function (element) {
  return typeof element === "object" ? element("FKey") : element;
}), "a;ga;7;");
var again = new Enumerator(vector);
again.moveNext();
again.moveFirst();
expect("moveFirst", again.item(), "a");

var recordset = connection.Execute("SELECT 7 AS FFirst, 'text' AS FSecond");
expect("Enumerator of Fields", walk(recordset.Fields, function (field) {
  return field.Name + "=" + field.Value;
}), "FFirst=7;FSecond=text;");

var command = new ActiveXObject("ADODB.Command");
command.Parameters.Append(command.CreateParameter("@First", 3, 1, 4, 12));
command.Parameters.Append(command.CreateParameter("@Second", 200, 1, 9, "text"));
expect("Enumerator of Parameters", walk(command.Parameters, function (parameter) {
  return parameter.Name + "=" + parameter.Value;
}), "@First=12;@Second=text;");

try {
  connection.Execute("SELECT FNone FROM NoSuchTable");
  expect("a missing table", "no error", "an error");
} catch (error) {
  expect("Enumerator of Errors", walk(connection.Errors, function (one) { return one.NativeError; }), "208;");
}

if (failures === 0) WScript.Echo("PASS");
