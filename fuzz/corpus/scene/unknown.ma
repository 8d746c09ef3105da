createNode stranger -n "s";
	addAttr -ci true -sn "x" -ln "extra" -at "double";
	setAttr -k on ".x" 1.5;
lockNode -l 1 ;
connectAttr "s.x" "t.y";
relationship "link" ":defaultLightSet.message";
