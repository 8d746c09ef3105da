//Maya ASCII 2008 scene
//Name: unknown.ma
requires maya "2008";
requires "fluffy" "1.0";
currentUnit -l centimeter -a degree -t film;
fileInfo "studio" "north";
createNode transform -n "thing";
	setAttr ".tx" 4.5;
	setAttr ".fluff" -type "fluffData" 1 2 3;
createNode fluffyNode -n "fluffy1";
	addAttr -ln "hair" -at "double";
	setAttr ".hair" 12;
connectAttr "fluffy1.out" "thing.ty";
relationship "link" ":lightLinker1" "fluffy1.message";
// End of unknown.ma
